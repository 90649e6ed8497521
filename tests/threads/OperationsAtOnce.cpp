#include "harness/Crowd.h"
#include "harness/Visitor.h"

#include <algorithm>

namespace {

// All six operations on each thread, one after another: while one of a thread's calls runs, a call of every other
// thread runs too, because the server holds each until all are there.
class OperationsAtOnce : public Crowd
{
protected:
    OperationsAtOnce()
    {
        config.tls = testserver::TlsMode::Implicit;
        trustByDefault(authority.certificatePem());
        // One moment of each operation. The connection test fetches a file, so it is held at the same reply as the
        // download.
        for (const char* const command : {"RETR", "STOR", "NLST", "rename", "rm"}) {
            holdAt(command);
        }
    }

    Visitor makeVisitor(unsigned thread) const
    {
        const std::string own = "thread-" + std::to_string(thread) + "/";
        return Visitor(thread, request, {url("/" + own), served(own), local(own)});
    }

    // `operationOf` says which operation a thread runs in a round, `facadeOf` on which facade.
    template <typename OperationOf, typename FacadeOf>
    void visit(OperationOf operationOf, FacadeOf facadeOf)
    {
        serve();
        std::vector<Visitor> visitors;
        for (unsigned i = 0; i < kThreads; ++i) {
            visitors.push_back(makeVisitor(i));
        }
        run([&](unsigned thread) {
            for (unsigned round = 0; round < Visitor::kOperations; ++round) {
                visitors[thread].perform(operationOf(thread, round), *facadeOf());
            }
            return visitors[thread].wrong();
        });
        EXPECT_EQ(kThreads * Visitor::kOperations, held());
        EXPECT_TRUE(sameLines(outputOf(visitors), printed()));
    }

    // Whose output comes first is left open, but no line is lost, doubled or broken.
    Lines printed() const
    {
        Lines lines = linesOf(out->content());
        std::sort(lines.begin(), lines.end());
        return lines;
    }

    static Lines outputOf(const std::vector<Visitor>& visitors)
    {
        Lines lines;
        for (const Visitor& visitor : visitors) {
            lines = std::move(lines) + visitor.output();
        }
        std::sort(lines.begin(), lines.end());
        return lines;
    }

    static unsigned theSame(unsigned /*thread*/, unsigned round) { return round; }
    static unsigned another(unsigned thread, unsigned round) { return (thread + round) % Visitor::kOperations; }

    SFtpClient* theOne() { return &facade; }
    static std::unique_ptr<SFtpClient> aNewOne() { return std::make_unique<SFtpClient>(); }
};

TEST_F(OperationsAtOnce, OneFacadeTheSameOperation)
{
    visit(theSame, [this] { return theOne(); });
}

TEST_F(OperationsAtOnce, OneFacadeAllOperations)
{
    visit(another, [this] { return theOne(); });
}

TEST_F(OperationsAtOnce, ManyFacadesTheSameOperation) { visit(theSame, aNewOne); }

TEST_F(OperationsAtOnce, ManyFacadesAllOperations) { visit(another, aNewOne); }

} // namespace
