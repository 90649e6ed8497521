#ifndef FUZZ_HARNESS_LEFTLISTS_H
#define FUZZ_HARNESS_LEFTLISTS_H

#include <vector>

struct curl_slist;

/// Frees the command lists that renames and deletes of `SFtpClient` leave behind, which they intend, while the object
/// exists: otherwise memory would grow, and libFuzzer would search for leaks after every run, which takes ten times as
/// long as the run.
class LeftLists
{
public:
    LeftLists();
    ~LeftLists();
    LeftLists(const LeftLists&) = delete;
    LeftLists& operator=(const LeftLists&) = delete;

    void add(curl_slist* list) { m_lists.push_back(list); }

private:
    std::vector<curl_slist*> m_lists;
};

#endif
