#ifndef UNIT_HARNESS_LOCALSTRINGS_H
#define UNIT_HARNESS_LOCALSTRINGS_H

#include <map>
#include <string>

/// The std::string objects of this name, with internal linkage and in no namespace, in this program: source file to
/// content, read through the program's own symbol table. Empty when the program has been stripped of it.
std::multimap<std::string, std::string> localStrings(const std::string& name);

#endif
