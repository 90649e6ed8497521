#include "tree/TreeListing.h"

#include <charconv>
#include <string_view>

int TreeFailure::reply() const
{
    constexpr std::string_view kMark = "(the server's last reply: ";
    const std::string_view text = what();
    const std::size_t mark = text.rfind(kMark);
    int code = 0;
    if (mark != std::string_view::npos) {
        const std::string_view digits = text.substr(mark + kMark.size(), 3);
        std::from_chars(digits.data(), digits.data() + digits.size(), code);
    }
    return code;
}
