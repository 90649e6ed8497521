#ifndef SUPPORT_RELAY_H
#define SUPPORT_RELAY_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

/// What a line does to the bytes of each connection, in both directions alike. The stream is cut into segments, and
/// some of them are lost, depending only on `seed`, the connection's number and the position in the stream.
struct Line
{
    std::chrono::milliseconds delay{0};            ///< each way, so half of a round trip
    unsigned lost = 0;                             ///< of 1,000 segments
    std::chrono::milliseconds retransmission{200}; ///< by which a lost segment is late, and all behind it
    std::size_t segment = 1460;                    ///< bytes
    bool splits = false;                           ///< segments have random sizes up to `segment`
    std::uint64_t rate = 0;                        ///< bytes per second; 0: unlimited
    std::uint64_t resetAfter = 0; ///< bytes towards the client, after which both ends are reset; 0: never
    std::uint32_t seed = 1;
};

/// One direction of a connection on a line: which bytes arrive when. Depends on no clock.
class Course
{
public:
    using Time = std::chrono::steady_clock::time_point;

    struct Piece
    {
        enum class Kind
        {
            Bytes,
            End, ///< the sender has finished
            Reset
        };
        Kind kind;
        Time due;
        std::string bytes;
    };

    /// Nothing arrives before `opened`. `resetAfter`: 0 for never.
    Course(const Line& line, std::uint32_t number, Time opened, std::uint64_t resetAfter);

    /// What becomes of bytes that are sent now. Nothing comes after a reset.
    std::vector<Piece> take(std::string_view bytes, Time now);

    Piece end(Piece::Kind kind, Time now) { return {kind, due(0, now), {}}; }

private:
    void beginSegment();
    Time due(std::size_t bytes, Time now);

    Line m_line;
    std::mt19937 m_random;
    Time m_last;               // nothing overtakes
    Time m_idle;               // when the rate allows the next byte
    std::uint64_t m_left;      // until the reset
    bool m_isCut = false;      // after it
    std::size_t m_segment = 0; // bytes left of it
    bool m_isLate = false;     // the segment's first piece is lost
};

/// TCP relays on 127.0.0.1, in a thread of their own: a client of theirs reaches the port behind them as over the line.
/// A connection reaches it one and a half round trips after the client has made it, as TCP's own handshake would. Any
/// number of threads may use it at the same time.
class Relay
{
public:
    explicit Relay(const Line& line);
    ~Relay();
    Relay(const Relay&) = delete;
    Relay& operator=(const Relay&) = delete;

    /// The relay's port for this one of 127.0.0.1, for any number of connections.
    std::uint16_t before(std::uint16_t port);

private:
    class Implementation;
    std::unique_ptr<Implementation> m_implementation;
};

#endif
