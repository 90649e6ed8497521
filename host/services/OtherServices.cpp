#include "OtherServices.h"

#include <dlfcn.h>
#include <link.h>
#include <unistd.h>

#include <exception>
#include <memory>
#include <string>

namespace {

struct Close
{
    void operator()(void* object) const { static_cast<void>(dlclose(object)); }
};
using Object = std::unique_ptr<void, Close>;

Object loaded(const char* name) { return Object(dlopen(name, RTLD_LAZY | RTLD_NOLOAD)); }

// Where the dynamic linker finds the services first: objects are looked at in the order in which they were loaded.
// Null where they are not visible to other objects.
const void* firstServices()
{
    constexpr char kService[] = "TSP_RequestID";
    const Object program = loaded(nullptr);
    const link_map* object = nullptr;
    if (dlinfo(program.get(), RTLD_DI_LINKMAP, &object) != 0) {
        return nullptr;
    }
    const void* found = dlsym(program.get(), kService);
    while (found == nullptr && (object = object->l_next) != nullptr) {
        const Object each = loaded(object->l_name);
        found = each ? dlsym(each.get(), kService) : nullptr;
    }
    return found;
}

bool tell()
{
    static const char here = 0;
    Dl_info first = {};
    Dl_info own = {};
    if (dladdr(firstServices(), &first) == 0 || dladdr(&here, &own) == 0 || first.dli_fbase == own.dli_fbase) {
        return false;
    }
    const std::string line = std::string("libSFtpClient uses the host services of ") + first.dli_fname +
                             ", which was loaded first, and not those of " + own.dli_fname +
                             ". Link SFtpClient::Host into one of them only.\n";
    static_cast<void>(::write(STDERR_FILENO, line.data(), line.size()) < 0);
    return true;
}

} // namespace

bool tellOfOtherServices() noexcept
{
    try {
        static const bool told = tell();
        return told;
    } catch (const std::exception&) {
        return false;
    }
}
