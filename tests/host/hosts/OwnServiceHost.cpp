#include <ConfigReader.h>
#include <LogProxy.h>

// A host with its own configuration, and the other ready services.
int ConfigReader::getInt(const std::string& /*section*/, const std::string& /*key*/, bool /*defaultValue*/)
{
    return 42;
}

int main()
{
    TSP_RequestID.get() = 5;
    LogProxy(2, "own", TSP_RequestID.get(), "main()", 9)
        << 0 << "the configuration says " << ConfigReader::getInt("General", "CertAuthSwitch", true);
    return 0;
}
