// A host with services of its own.
#include "OwnServices.h"

#include "host.cpp"
