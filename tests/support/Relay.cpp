#include "support/Relay.h"

#include <boost/asio.hpp>

#include <algorithm>
#include <array>
#include <atomic>
#include <deque>
#include <limits>
#include <thread>
#include <utility>

namespace asio = boost::asio;
using asio::ip::tcp;

namespace {

using Clock = std::chrono::steady_clock;
using Piece = Course::Piece;
using Failed = boost::system::error_code;

constexpr std::size_t kMostHeld = std::size_t{1} << 20;

tcp::endpoint loopback(std::uint16_t port) { return {asio::ip::address_v4::loopback(), port}; }

// One connection of a client, and the one to the server that belongs to it.
class Passage : public std::enable_shared_from_this<Passage>
{
public:
    Passage(tcp::socket client, tcp::endpoint server, const Line& line, std::uint32_t number)
        : m_client(std::move(client)), m_server(m_client.get_executor()), m_opening(m_client.get_executor()),
          m_there(std::move(server)), m_opened(Clock::now() + 3 * line.delay),
          m_up(m_client, m_server, Course(line, 2 * number, m_opened, 0)),
          m_down(m_server, m_client, Course(line, 2 * number + 1, m_opened, line.resetAfter))
    {
    }

    void begin()
    {
        m_client.set_option(tcp::no_delay(true));
        read(m_up);
        m_opening.expires_at(m_opened);
        m_opening.async_wait([self = shared_from_this()](Failed failed) {
            if (!failed) {
                self->connect();
            }
        });
    }

private:
    struct Flow
    {
        Flow(tcp::socket& source, tcp::socket& target, const Course& itsCourse)
            : from(source), to(target), course(itsCourse), timer(source.get_executor())
        {
        }

        tcp::socket& from;
        tcp::socket& to;
        Course course;
        asio::steady_timer timer;
        std::deque<Piece> pieces;
        std::size_t held = 0;
        bool isReading = false;
        bool isMoving = false;
        std::array<char, 16384> block = {};
    };

    void connect()
    {
        m_server.async_connect(m_there, [self = shared_from_this()](Failed failed) {
            if (failed) {
                self->reset();
                return;
            }
            self->m_server.set_option(tcp::no_delay(true), failed);
            self->m_isConnected = true;
            self->move(self->m_up);
            self->read(self->m_down);
        });
    }

    void read(Flow& flow)
    {
        if (flow.isReading || flow.held > kMostHeld) {
            return;
        }
        flow.isReading = true;
        flow.from.async_read_some(asio::buffer(flow.block),
                                  [self = shared_from_this(), &flow](Failed failed, std::size_t count) {
                                      flow.isReading = static_cast<bool>(failed); // after an end nothing is read
                                      self->take(flow, failed, count);
                                  });
    }

    void take(Flow& flow, Failed failed, std::size_t count)
    {
        if (failed) {
            const Piece::Kind kind = failed == asio::error::eof ? Piece::Kind::End : Piece::Kind::Reset;
            flow.pieces.push_back(flow.course.end(kind, Clock::now()));
        } else {
            for (Piece& piece : flow.course.take({flow.block.data(), count}, Clock::now())) {
                flow.held += piece.bytes.size();
                flow.pieces.push_back(std::move(piece));
            }
            read(flow);
        }
        move(flow);
    }

    void move(Flow& flow)
    {
        if (!m_isConnected || flow.isMoving || flow.pieces.empty()) {
            return;
        }
        flow.isMoving = true;
        if (flow.pieces.front().due <= Clock::now()) {
            deliver(flow);
            return;
        }
        flow.timer.expires_at(flow.pieces.front().due);
        flow.timer.async_wait([self = shared_from_this(), &flow](Failed failed) {
            if (!failed) {
                self->deliver(flow);
            }
        });
    }

    void deliver(Flow& flow)
    {
        Failed ignored;
        const Piece& piece = flow.pieces.front();
        if (piece.kind == Piece::Kind::Reset) {
            reset();
            return;
        }
        if (piece.kind == Piece::Kind::End) {
            flow.to.shutdown(tcp::socket::shutdown_send, ignored);
            return;
        }
        asio::async_write(flow.to, asio::buffer(piece.bytes),
                          [self = shared_from_this(), &flow](Failed failed, std::size_t count) {
                              if (failed) {
                                  self->reset();
                                  return;
                              }
                              flow.held -= count;
                              flow.pieces.pop_front();
                              flow.isMoving = false;
                              self->read(flow);
                              self->move(flow);
                          });
    }

    void reset()
    {
        Failed ignored;
        for (tcp::socket* const each : {&m_client, &m_server}) {
            each->set_option(asio::socket_base::linger(true, 0), ignored);
            each->close(ignored);
        }
        m_opening.cancel();
        m_up.timer.cancel();
        m_down.timer.cancel();
    }

    tcp::socket m_client;
    tcp::socket m_server;
    asio::steady_timer m_opening;
    tcp::endpoint m_there;
    Course::Time m_opened;
    bool m_isConnected = false;
    Flow m_up;
    Flow m_down;
};

} // namespace

Course::Course(const Line& line, std::uint32_t number, Time opened, std::uint64_t resetAfter)
    : m_line(line), m_random(line.seed * 65537 + number), m_last(opened), m_idle(opened),
      m_left(resetAfter == 0 ? std::numeric_limits<std::uint64_t>::max() : resetAfter)
{
}

void Course::beginSegment()
{
    m_segment =
        m_line.splits ? std::uniform_int_distribution<std::size_t>(1, m_line.segment)(m_random) : m_line.segment;
    m_isLate = std::uniform_int_distribution<unsigned>(1, 1000)(m_random) <= m_line.lost;
}

Course::Time Course::due(std::size_t bytes, Time now)
{
    if (m_line.rate != 0) {
        m_idle = std::max(m_idle, now) + std::chrono::microseconds(bytes * 1000000 / m_line.rate);
        now = m_idle;
    }
    m_last = std::max(m_last, now + m_line.delay + (m_isLate ? m_line.retransmission : std::chrono::milliseconds(0)));
    m_isLate = false;
    return m_last;
}

std::vector<Course::Piece> Course::take(std::string_view bytes, Time now)
{
    std::vector<Piece> pieces;
    while (!bytes.empty() && !m_isCut) {
        if (m_segment == 0) {
            beginSegment();
        }
        const std::size_t count = static_cast<std::size_t>(std::min<std::uint64_t>({bytes.size(), m_segment, m_left}));
        pieces.push_back({Piece::Kind::Bytes, due(count, now), std::string(bytes.substr(0, count))});
        bytes.remove_prefix(count);
        m_segment -= count;
        m_left -= count;
        if (m_left == 0) {
            m_isCut = true;
            pieces.push_back(end(Piece::Kind::Reset, now));
        }
    }
    return pieces;
}

class Relay::Implementation
{
public:
    explicit Implementation(const Line& line)
        : m_line(line), m_working(asio::make_work_guard(m_context)), m_thread([this] { m_context.run(); })
    {
    }

    ~Implementation()
    {
        m_context.stop();
        m_thread.join();
    }

    std::uint16_t before(std::uint16_t port)
    {
        const auto acceptor = std::make_shared<tcp::acceptor>(m_context, loopback(0));
        const std::uint16_t own = acceptor->local_endpoint().port(); // before it is the thread's
        asio::post(m_context, [this, acceptor, port] { accept(acceptor, port); });
        return own;
    }

private:
    void accept(const std::shared_ptr<tcp::acceptor>& acceptor, std::uint16_t port)
    {
        acceptor->async_accept([this, acceptor, port](Failed failed, tcp::socket client) {
            if (failed) {
                return; // the clients notice
            }
            std::make_shared<Passage>(std::move(client), loopback(port), m_line, m_connections++)->begin();
            accept(acceptor, port);
        });
    }

    const Line m_line;
    std::uint32_t m_connections = 0; // only the thread counts them
    asio::io_context m_context;
    asio::executor_work_guard<asio::io_context::executor_type> m_working;
    std::thread m_thread;
};

Relay::Relay(const Line& line) : m_implementation(std::make_unique<Implementation>(line)) {}
Relay::~Relay() = default;

std::uint16_t Relay::before(std::uint16_t port) { return m_implementation->before(port); }
