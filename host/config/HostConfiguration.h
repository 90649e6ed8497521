#ifndef SFTPCLIENT_HOST_HOSTCONFIGURATION_H
#define SFTPCLIENT_HOST_HOSTCONFIGURATION_H

#include "IniFile.h"

#include <memory>
#include <mutex>
#include <string>

/// The configuration of the ready host services: the values of one INI file, read once and again only on request.
///
/// Any number of threads may use it at the same time. Who asks while a file is being read sees the values from before
/// or those from after, never some of each. A child of `fork` may use the process's configuration too, whatever the
/// threads of its parent did meanwhile; `fork` waits for the file that is being read.
class HostConfiguration
{
public:
    /// The process's configuration. It is there until the process ends.
    static HostConfiguration& instance();

    HostConfiguration() = default;
    HostConfiguration(const HostConfiguration&) = delete;
    HostConfiguration& operator=(const HostConfiguration&) = delete;

    /// Makes `path` the configuration's file and reads it. Throws `std::runtime_error`, whose text names the file and
    /// says what is wrong with it, when that fails; the configuration is then what it was before.
    void load(const std::string& path);

    /// Reads the file anew: the one of `load`, or else the one that the environment variable SFTPCLIENT_CONFIG names
    /// now; without either there are no values. The variable counts for nothing in a process that was given rights
    /// which its user does not have, by set-user-ID, set-group-ID or file capabilities. Fails as `load` does.
    void reload();

    /// The values as they were read last, for as long as the caller keeps them. The first call reads, as `reload` does,
    /// unless a file was loaded. Throws `std::runtime_error`, with the same text each time, when that first reading
    /// failed and nothing has been loaded since.
    /// REQUIRES: nobody changes the environment during `reload` and the first call.
    std::shared_ptr<const IniFile> values();

private:
    static void lock();
    static void unlock();
    void keep(std::shared_ptr<const IniFile> values);

    // One reading after the other, so that what stays is what was read last.
    std::mutex m_reading;
    std::string m_path;

    std::mutex m_mutex;
    std::shared_ptr<const IniFile> m_values;
    std::string m_failure;
};

#endif
