// Reads a configuration file as hosts with the ready services do, and fails where they would.

#include <HostConfiguration.h>
#include <HostLogSettings.h>
#include <HostTlsSettings.h>

#include <exception>
#include <iostream>

int main(int argc, char** argv)
try {
    if (argc != 2) {
        std::cerr << "usage: read-settings FILE\n";
        return 2;
    }
    HostConfiguration& configuration = HostConfiguration::instance();
    configuration.load(argv[1]);
    logSettingsFrom(*configuration.values());
    tlsSettingsFrom(*configuration.values());
    return 0;
} catch (const std::exception& error) {
    std::cerr << error.what() << "\n";
    return 1;
}
