#include <LogProxy.h>

ThreadRequestId TSP_RequestID;

unsigned long& ThreadRequestId::get()
{
    thread_local unsigned long identifier = 0;
    return identifier;
}
