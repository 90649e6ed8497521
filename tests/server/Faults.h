#ifndef TESTSERVER_FAULTS_H
#define TESTSERVER_FAULTS_H

#include <cstdint>
#include <string>
#include <vector>

namespace testserver {

/// What the server does wrong. README.md says what each one looks like to the client.
enum class Misbehaviour
{
    // in place of, or around, a command
    Reply,
    Last,
    Endless,
    Drop,
    Reset,
    Stall,
    Delay,
    Split,
    Pad,
    Append,
    Meet,
    // on a data connection
    DropAfter,
    ResetAfter,
    ClaimAfter,
    StallAfter,
    Slow,
    Plain,
    Garbage,
    Close,
    Refuse,
    NoCloseNotify
};

/// One misbehaviour and when it happens.
struct Fault
{
    /// A command, or GREETING, TLS (the handshake on the control connection), LISTEN (the port of a data connection),
    /// DATA (the data connection itself) or DONE (the reply after it).
    std::string command;
    Misbehaviour misbehaviour = Misbehaviour::Drop;
    std::string text;         ///< Reply, Last, Endless, Append: the bytes to send
    std::uint64_t number = 0; ///< Delay: milliseconds; Meet: sessions; Slow: bytes a second; Pad, ...After: bytes
    unsigned occurrence = 0;  ///< the nth of its kind in a session; 0: each
    unsigned session = 0;     ///< the nth session of the server; 0: each
};

/// Reads "[SESSION/]COMMAND[#OCCURRENCE]=MISBEHAVIOUR[:ARGUMENT]", for example "SIZE=reply:550 no such file" or
/// "2/DATA#1=drop-after:1000". In a reply's text, \r \n \0 \\ and \xHH stand for bytes; a line end is added unless the
/// text ends in \c. Throws `std::invalid_argument`, also for a misbehaviour that the command cannot show.
Fault parseFault(const std::string& text);

/// The faults of one session: counts what happens and finds the fault that it meets.
class FaultPlan
{
public:
    FaultPlan(const std::vector<Fault>& faults, unsigned session);

    /// The fault for this occurrence of the command, or null. Commands are compared without regard to case.
    const Fault* next(const std::string& command);

private:
    struct Entry
    {
        Fault fault;
        unsigned seen = 0;
    };
    std::vector<Entry> m_entries;
};

} // namespace testserver

#endif
