#include <HostConfiguration.h>

#include <sys/auxv.h>

#include <iostream>

// Says whether it has rights that its user does not have, and whether it obeys the environment variable.
int main()
{
    std::cout << (getauxval(AT_SECURE) != 0 ? "secure process, " : "ordinary process, ")
              << HostConfiguration::instance().values()->find("General", "Key").value_or("not obeyed") << "\n";
    return 0;
}
