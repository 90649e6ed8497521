#ifndef SFTPCLIENT_PLATFORM_CONFIGREADER_H
#define SFTPCLIENT_PLATFORM_CONFIGREADER_H

#include <string>

/// The host's configuration service. Called from every thread that uses the library.
class ConfigReader
{
public:
    /// The integer of `key` in `section`, or `defaultValue` as 1 or 0 if there is none.
    ///
    /// The library reads one value: `CertAuthSwitch` in section `General`, with the default true. 0 allows transfers
    /// with an unverified server, for requests whose certificate text is "none"; anything else forbids them. An
    /// exception ends the operation and passes to the library's caller.
    static int getInt(const std::string& section, const std::string& key, bool defaultValue);
};

#endif
