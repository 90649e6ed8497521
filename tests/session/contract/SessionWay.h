#ifndef SESSION_CONTRACT_SESSIONWAY_H
#define SESSION_CONTRACT_SESSIONWAY_H

#include "OperationCalls.h"
#include "SessionContract.h"

#include <ostream>
#include <string>
#include <vector>

/// In place of a result: the call threw `std::bad_alloc`.
constexpr int kThrown = -1000;

/// One operation over one scheme.
struct Way
{
    OperationCall call;
    std::string scheme;
};

std::ostream& operator<<(std::ostream& stream, const Way& way);

/// Each operation over each scheme.
std::vector<Way> allWays();
std::string nameOfWay(const testing::TestParamInfo<Way>& parameter);

/// The base of the tests that try each way again and again, each time with another thing that fails: with every option
/// set that a session has.
class SessionWay : public SessionContract, public testing::WithParamInterface<Way>
{
protected:
    SessionWay();

    /// Puts a local file there.
    void prepare();

    int resultOf(SFtpSession& session);

    /// Once more, and to a file that is not there: to replace one takes time.
    int again(SFtpSession& session);

    /// That the local file is as it was, or, where a call may have come to its end, whole; and that no other file is
    /// there.
    void expectNothingDamaged(bool mayBeDone = false) const;
};

#endif
