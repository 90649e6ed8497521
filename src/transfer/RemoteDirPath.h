#ifndef SFTPCLIENT_TRANSFER_REMOTEDIRPATH_H
#define SFTPCLIENT_TRANSFER_REMOTEDIRPATH_H

#include <string>

/// The directory that a URL of the form scheme://host:port/dir/ names: what follows its last ":", from the first "/"
/// on. It is not a URL parser: without a port it yields "//host/dir/". False when there is no such text.
bool findRemoteDirPath(const std::string& url, std::string& remoteDirPath);

#endif
