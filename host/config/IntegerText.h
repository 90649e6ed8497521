#ifndef SFTPCLIENT_HOST_INTEGERTEXT_H
#define SFTPCLIENT_HOST_INTEGERTEXT_H

#include <string>

/// The decimal integer that `text` is, all of it. Throws `std::runtime_error`, whose text repeats `text` and tells the
/// limits, when it is none or lies beyond them.
long long integerFrom(const std::string& text, long long lowest, long long highest);

#endif
