#ifndef SUPPORT_PLANTEDPASSWORD_H
#define SUPPORT_PLANTEDPASSWORD_H

#include <iosfwd>
#include <string>
#include <vector>

/// A password that a server repeats wherever it can, in every form that the command promises to hide. Each stands
/// between << and >>, so that one of a single character can be told from what is there anyway.
struct PlantedPassword
{
    const char* id;
    std::string password;

    std::vector<std::string> forms(const std::string& user) const;

    /// All forms, for one line of a server.
    std::string text(const std::string& user) const;

    /// The first form that `output` shows between the marks, as it is or escaped for a terminal or for JSON; or
    /// nothing.
    std::string shownIn(const std::string& output, const std::string& user) const;
};

std::string marked(const std::string& form);

/// As the text of a fault, in which a backslash is written twice.
std::string asFault(const std::string& text);

/// An ordinary one, and those that can be mistaken for something else.
const std::vector<PlantedPassword>& everyPassword();

/// For the tests' names in ctest.
void PrintTo(const PlantedPassword& planted, std::ostream* stream);

#endif
