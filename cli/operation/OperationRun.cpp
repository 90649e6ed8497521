#include "operation/OperationRun.h"

#include "operation/Interruption.h"
#include "output/ResultLine.h"

#include <curl/curl.h>

namespace {

std::string inSeconds(std::chrono::milliseconds delay)
{
    std::string text = std::to_string(std::chrono::duration<double>(delay).count());
    text.erase(text.find_last_not_of('0') + 1);
    return text.substr(0, text.back() == '.' ? text.size() - 1 : text.size()) + " s";
}

void describeInterruption(const OperationRun& run, int signal, Result& result)
{
    result.signal = nameOfSignal(signal);
    result.hint.clear();
    result.reply.clear();
    result.code = CURLE_ABORTED_BY_CALLBACK;
    result.text = "interrupted by " + result.signal + "; " + run.whatIsLeft(result);
}

} // namespace

Result runToItsEnd(OperationRun& run, Result result, Retry retry, const Notice& notice)
{
    const auto begin = std::chrono::steady_clock::now();
    run.attempt(result);
    while (retry.isLeft() && run.mayPass() && Interruption::signal() == 0) {
        const std::chrono::milliseconds delay = retry.next();
        if (run.isOver(delay)) {
            break;
        }
        notice(lineOf(result) + "; trying again in " + inSeconds(delay));
        Interruption::wait(delay);
        if (Interruption::signal() == 0) {
            ++result.attempts;
            run.attempt(result);
        }
    }
    if (result.code == CURLE_OPERATION_TIMEDOUT && run.isOver({})) {
        result.hint.clear(); // which would blame the server
    }
    if (Interruption::signal() != 0 && result.code != 0) {
        describeInterruption(run, Interruption::signal(), result);
    }
    result.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    return result;
}
