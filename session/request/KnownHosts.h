#ifndef SFTPCLIENT_SESSION_KNOWNHOSTS_H
#define SFTPCLIENT_SESSION_KNOWNHOSTS_H

#include <string>

namespace session {

/// What keeps a file of known hosts from being read as a whole: libssh2 ends at the first line that it cannot read, and
/// libcurl does not tell. Empty if nothing does; a file that is missing knows no host.
std::string obstacleIn(const std::string& knownHostsFile);

} // namespace session

#endif
