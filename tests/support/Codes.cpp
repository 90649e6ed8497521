#include "support/Codes.h"

#include <output/ResultName.h>

std::string nameOf(int code) { return nameOfResult(code); }
