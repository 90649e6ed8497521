// The doctor's predictions, compared with what the library's operations then do on the same server.
#include "harness/Truth.h"
#include "harness/Kinds.h"

namespace {

class Truth : public OfAKind
{
protected:
    std::vector<int> truth()
    {
        return truthOf(question, local("scratch"),
                       [this](const std::string& name, const std::string& content) { keep(name, content); });
    }
};

TEST_P(Truth, IsWhatWasPredicted)
{
    const std::vector<doctor::Prediction> predictions = predict(examine(question));
    EXPECT_EQ(GetParam().outlooks, outlooksOf(predictions));
    expectTruth(predictions, truth());
}

TEST_P(Truth, IsWhatWasPredictedForASession)
{
    const std::vector<doctor::Prediction> predictions = ofSession(predict(examine(question)));
    EXPECT_EQ(GetParam().ofSession, outlooksOf(predictions));
    expectTruth(predictions,
                truthOfSession(question, local("scratch"),
                               [this](const std::string& name, const std::string& content) { keep(name, content); }));
}

INSTANTIATE_TEST_SUITE_P(OfAServer, Truth, testing::ValuesIn(kinds()), idOf);

} // namespace
