// A host with its own services.
#include "OwnServices.h"

#include "host.cpp"
