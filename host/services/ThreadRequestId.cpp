#include <LogProxy.h>

#include "OtherServices.h"

namespace {

[[maybe_unused]] const bool anotherIsUsed = tellOfOtherServices();

} // namespace

ThreadRequestId TSP_RequestID;

unsigned long& ThreadRequestId::get()
{
    thread_local unsigned long identifier = 0;
    return identifier;
}
