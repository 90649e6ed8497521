#include "log/GetFunctionName.h"

std::string GetFunctionName(const std::string& prettyFunction)
{
    const std::string::size_type parameters = prettyFunction.find('(');
    if (parameters == std::string::npos) {
        return prettyFunction;
    }
    const std::string head = prettyFunction.substr(0, parameters);
    const std::string::size_type blank = head.rfind(' ');
    const std::string::size_type start = blank == std::string::npos ? 0 : blank + 1;
    return head.substr(start) + "()";
}
