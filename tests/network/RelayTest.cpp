// What the relay makes of a line, without a clock; and that what it passes on is what was sent.
#include "support/Relay.h"

#include "support/RandomBytes.h"

#include <boost/asio.hpp>

#include <gtest/gtest.h>

namespace {

using namespace std::chrono_literals;
using Kind = Course::Piece::Kind;

const Course::Time kNow = Course::Time() + 1h;

// The lengths of the segments, and by how many milliseconds each is late.
using Segments = std::vector<std::pair<std::size_t, std::int64_t>>;

Segments segmentsOf(const std::vector<Course::Piece>& pieces)
{
    Segments segments;
    for (const Course::Piece& each : pieces) {
        segments.emplace_back(each.bytes.size(), std::chrono::milliseconds((each.due - kNow) / 1ms).count());
    }
    return segments;
}

Segments taken(const Line& line, std::size_t bytes, std::uint32_t number = 0)
{
    return segmentsOf(Course(line, number, kNow, 0).take(std::string(bytes, 'x'), kNow));
}

Line inSegmentsOf(std::size_t bytes)
{
    Line line;
    line.segment = bytes;
    return line;
}

} // namespace

TEST(RelayCourse, BytesArriveAfterTheDelay)
{
    Line line = inSegmentsOf(100);
    line.delay = 25ms;
    EXPECT_EQ((Segments{{100, 25}, {100, 25}, {50, 25}}), taken(line, 250));
}

TEST(RelayCourse, NothingArrivesBeforeTheConnectionIsMade)
{
    Line line;
    line.delay = 25ms;
    Course course(line, 0, kNow + 75ms, 0);
    EXPECT_EQ((Segments{{5, 75}}), segmentsOf(course.take("early", kNow)));
    EXPECT_EQ((Segments{{4, 125}}), segmentsOf(course.take("late", kNow + 100ms)));
}

TEST(RelayCourse, ALostSegmentHoldsBackWhatFollows)
{
    Line line = inSegmentsOf(100);
    line.delay = 25ms;
    line.lost = 1000;
    Course course(line, 0, kNow, 0);
    EXPECT_EQ((Segments{{50, 225}}), segmentsOf(course.take(std::string(50, 'x'), kNow)));
    EXPECT_EQ((Segments{{50, 225}}), segmentsOf(course.take(std::string(50, 'x'), kNow + 10ms))) << "the same segment";
    EXPECT_EQ((Segments{{100, 235}}), segmentsOf(course.take(std::string(100, 'x'), kNow + 10ms)));
}

TEST(RelayCourse, OnePercentIsLost)
{
    Line line = inSegmentsOf(1);
    line.lost = 10;
    line.retransmission = 1ms;
    Course course(line, 0, kNow, 0);
    int late = 0;
    for (int i = 0; i < 10000; ++i) {
        const Course::Time now = kNow + i * 10ms;
        late += course.take("x", now).at(0).due == now + 1ms ? 1 : 0;
    }
    EXPECT_LT(50, late);
    EXPECT_GT(150, late);
}

// Bounds and losses do not depend on when which bytes come.
TEST(RelayCourse, TheStreamDecidesAlone)
{
    Line line = inSegmentsOf(40);
    line.splits = true;
    line.lost = 500;
    const Segments atOnce = taken(line, 1000);
    Course course(line, 0, kNow, 0);
    std::size_t before = 0;
    for (const auto& [bytes, late] : atOnce) {
        EXPECT_EQ((Segments{{bytes, late}}), segmentsOf(course.take(std::string(bytes, 'x'), kNow))) << before;
        before += bytes;
    }
    EXPECT_EQ(1000U, before);
    EXPECT_LT(25U, atOnce.size());
    EXPECT_NE(atOnce, taken(line, 1000, 1)) << "another connection";
    line.seed = 2;
    EXPECT_NE(atOnce, taken(line, 1000)) << "another seed";
}

TEST(RelayCourse, TheRateSpacesSegments)
{
    Line line = inSegmentsOf(100);
    line.rate = 1000;
    EXPECT_EQ((Segments{{100, 100}, {100, 200}, {50, 250}}), taken(line, 250));
}

TEST(RelayCourse, AResetComesAfterSoManyBytes)
{
    Course course(Line(), 0, kNow, 7);
    EXPECT_EQ(1U, course.take("12345", kNow).size());
    const auto last = course.take("12345", kNow);
    ASSERT_EQ(2U, last.size());
    EXPECT_EQ("12", last[0].bytes);
    EXPECT_EQ(Kind::Reset, last[1].kind);
    EXPECT_TRUE(course.take("12345", kNow).empty());
}

TEST(Relay, PassesOnWhatWasSentAndItsEndNotBeforeTheyAreDue)
{
    using boost::asio::ip::tcp;
    boost::asio::io_context context;
    tcp::acceptor server(context, {boost::asio::ip::address_v4::loopback(), 0});
    Line line;
    line.splits = true;
    line.delay = 10ms;
    Relay relay(line);
    tcp::socket client(context);
    const Course::Time made = Course::Time::clock::now();
    client.connect({boost::asio::ip::address_v4::loopback(), relay.before(server.local_endpoint().port())});
    tcp::socket accepted = server.accept();
    EXPECT_LE(made + 3 * line.delay, Course::Time::clock::now());
    for (const auto& [from, to] : {std::pair(&client, &accepted), std::pair(&accepted, &client)}) {
        const std::string sent = randomBytes(100000);
        const Course::Time begun = Course::Time::clock::now();
        boost::asio::write(*from, boost::asio::buffer(sent));
        from->shutdown(tcp::socket::shutdown_send);
        std::string got;
        boost::system::error_code end;
        boost::asio::read(*to, boost::asio::dynamic_buffer(got), end);
        EXPECT_EQ(boost::asio::error::eof, end);
        EXPECT_EQ(sent, got);
        EXPECT_LE(begun + line.delay, Course::Time::clock::now());
    }
}
