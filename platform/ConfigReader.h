#ifndef SFTPCLIENT_PLATFORM_CONFIGREADER_H
#define SFTPCLIENT_PLATFORM_CONFIGREADER_H

#include <string>

/// The host's configuration service. Called from every thread that uses the library.
class ConfigReader
{
public:
    /// The integer under `key` of `section`, or `defaultValue` as 1 or 0 where there is none.
    ///
    /// The library asks for one value: `CertAuthSwitch` of section `General`, with the default true. 0 allows
    /// transfers to a server that is not verified, for requests whose certificate text is "none"; anything else
    /// forbids them. What is thrown ends the operation and passes to the library's caller.
    static int getInt(const std::string& section, const std::string& key, bool defaultValue);
};

#endif
