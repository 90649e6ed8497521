#ifndef SFTPCLIENT_HOST_OTHERSERVICES_H
#define SFTPCLIENT_HOST_OTHERSERVICES_H

/// Looks for host services in the other objects of the process, the program and its shared objects. Where some of them
/// come before those that this code was linked with, libSFtpClient uses these; standard error then gets a line that
/// says so, once. Answers whether there are such.
///
/// Hidden, for each object that has the ready services must look with code of its own.
[[gnu::visibility("hidden")]] bool tellOfOtherServices() noexcept;

#endif
