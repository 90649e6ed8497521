#include "HostConfiguration.h"

#include <pthread.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <utility>

namespace {

std::shared_ptr<const IniFile> read(const std::string& named)
{
    const char* const variable = secure_getenv("SFTPCLIENT_CONFIG");
    const std::string path = named.empty() && variable != nullptr ? variable : named;
    return path.empty() ? std::make_shared<const IniFile>() : std::make_shared<const IniFile>(path);
}

// Made when the process is loaded: no fork can come in between then.
[[maybe_unused]] const HostConfiguration& made = HostConfiguration::instance();

} // namespace

HostConfiguration& HostConfiguration::instance()
{
    // Never destroyed: static objects' destructors may use the library too.
    static HostConfiguration* const configuration = [] {
        // A child of fork has one thread, and would wait for ever for a mutex that another one held.
        static_cast<void>(pthread_atfork(lock, unlock, unlock));
        return new HostConfiguration;
    }();
    return *configuration;
}

void HostConfiguration::lock()
{
    instance().m_reading.lock();
    instance().m_mutex.lock();
}

void HostConfiguration::unlock()
{
    instance().m_mutex.unlock();
    instance().m_reading.unlock();
}

void HostConfiguration::load(const std::string& path)
{
    // The host may change its working folder between this and a reload.
    const std::string absolute = path.empty() ? path : std::filesystem::absolute(path).string();
    const std::lock_guard<std::mutex> lock(m_reading);
    keep(std::make_shared<const IniFile>(absolute));
    m_path = absolute;
}

void HostConfiguration::reload()
{
    const std::lock_guard<std::mutex> lock(m_reading);
    keep(read(m_path));
}

std::shared_ptr<const IniFile> HostConfiguration::values()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_values && m_failure.empty()) {
        try {
            m_values = read({});
        } catch (const std::runtime_error& error) {
            m_failure = error.what();
        }
    }
    if (!m_values) {
        throw std::runtime_error(m_failure);
    }
    return m_values;
}

void HostConfiguration::keep(std::shared_ptr<const IniFile> values)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_values = std::move(values);
}
