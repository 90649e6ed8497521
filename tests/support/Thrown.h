#ifndef SUPPORT_THROWN_H
#define SUPPORT_THROWN_H

#include <exception>
#include <string>

constexpr const char* kNothingThrown = "nothing thrown";

/// The message of the exception that an action throws. One of another type propagates.
template <typename Exception = std::exception, typename Action>
std::string thrownBy(const Action& action)
{
    try {
        action();
    } catch (const Exception& error) {
        return error.what();
    }
    return kNothingThrown;
}

#endif
