#ifndef SFTPCLIENT_LOG_GETFUNCTIONNAME_H
#define SFTPCLIENT_LOG_GETFUNCTIONNAME_H

#include <string>

/// The short name of a function, as log records carry it: "bool A::f(int)" gives "A::f()". Class qualification is
/// kept; return type, words before it and parameters are dropped. A text without "(" is returned as it is.
__attribute__((visibility("default"))) std::string GetFunctionName(const std::string& prettyFunction);

#endif
