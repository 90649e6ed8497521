// Uses every host service but the last; HostServices.cmake adds that one, and what else it plants.
#include <ConfigReader.h>
#include <LogProxy.h>
#include <SecuritySS.h>

int some(const std::string& text)
{
    LogProxy(1, text, TSP_RequestID.get(), text, 1) << text;
    return ConfigReader::getInt(text, text, true);
}
