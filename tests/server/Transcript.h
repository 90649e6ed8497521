#ifndef TESTSERVER_TRANSCRIPT_H
#define TESTSERVER_TRANSCRIPT_H

#include <string>
#include <vector>

namespace testserver {

/// The lines of one session: what each side sent, and the data connections. README.md explains them.
using Transcript = std::vector<std::string>;

/// A client's command as a transcript records it: the password is hidden, control bytes are written \xHH.
std::string commandLine(const std::string& command);

/// What the server sent as a transcript records it, a line for each line; control bytes are written \xHH.
std::vector<std::string> replyLines(const std::string& bytes);

} // namespace testserver

#endif
