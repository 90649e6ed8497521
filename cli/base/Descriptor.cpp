#include "base/Descriptor.h"

#include <unistd.h>

Descriptor::~Descriptor()
{
    if (isOpen()) {
        close(m_descriptor);
    }
}
