#ifndef SUPPORT_LOGSHAPE_H
#define SUPPORT_LOGSHAPE_H

#include <string>

/// `log` with "TIME" in place of a record's time, where that begins a line, or a line's JSON object, and is one.
std::string replaceTimes(const std::string& log);

/// `log` with "LINE" in place of the line number of each record, be it text or JSON.
std::string replaceLines(const std::string& log);

#endif
