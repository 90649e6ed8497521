#ifndef UNIT_HARNESS_SCRIPTEDCURL_H
#define UNIT_HARNESS_SCRIPTEDCURL_H

#include <vector>

/// The three libcurl functions that a transfer object needs to live, defined by this program.
namespace scripted {

struct Curl
{
    bool givesHandles = true;
    bool knowsTexts = true;         ///< curl_easy_strerror answers as libcurl does, or else with null
    std::vector<int> asked;         ///< the codes that a text was asked for
    unsigned opened = 0;            ///< handles given
    std::vector<void*> cleanedUp{}; ///< handles taken back, in order
};

Curl& curl();

} // namespace scripted

#endif
