#include "Fault.h"

#include "support/RandomBytes.h"

#include <filesystem>

namespace {

std::string usualPath(Operation operation)
{
    switch (operation) {
    case Operation::Download:
    case Operation::Checked:
        return "/dir/a.bak";
    case Operation::Upload:
        return "/dir/up.bak";
    default:
        return "/dir/";
    }
}

std::string namesOf(const std::set<int>& codes)
{
    std::string names;
    for (const int code : codes) {
        names += (names.empty() ? "" : " or ") + nameOf(code);
    }
    return names;
}

} // namespace

Row::Row(std::string theName, Operation theOperation, std::vector<std::string> theFaults, std::set<int> theCodes)
    : name(std::move(theName)), operation(theOperation), faults(std::move(theFaults)), codes(std::move(theCodes)),
      path(usualPath(theOperation))
{
}

std::ostream& operator<<(std::ostream& stream, const Row& row)
{
    stream << row.name;
    for (const std::string& fault : row.faults) {
        stream << " " << fault.substr(0, 80);
    }
    return stream;
}

std::string idOf(const testing::TestParamInfo<Row>& info) { return info.param.name; }

void Fault::SetUp()
{
    ASSERT_TRUE(row().codes.size() == 1 || !row().why.empty()) << "a row with several codes says why";
    std::filesystem::create_directory(served("dir"));
    writeFile(served("dir/a.bak"), randomBytes(kAll));
    writeFile(served("dir/b.bak"), "another");
    if (row().operation == Operation::Upload) {
        writeFile(request.localPath, randomBytes(kUploaded));
    } else if (row().operation == Operation::Rename) {
        request.localPath = "new.bak";
    } else if (row().operation == Operation::Download || row().operation == Operation::List) {
        writeFile(request.localPath, "an old file, which is to be emptied");
    }
    request.remoteFileName = "a.bak";
    for (const std::string& fault : row().faults) {
        misbehave(fault);
    }
    Scene scene{config, request, authority};
    if (row().arrange != nullptr) {
        row().arrange(scene);
    }
    // Where the request's certificate is ignored, the machine's trust store holds the same CA.
    trustByDefault(request.caCert);
    serve();
    if (scene.serverGone) {
        stopServing();
    }
    const std::string usual = url(row().path);
    request.remotePath = scene.scheme.empty() ? usual : scene.scheme + usual.substr(usual.find(':'));
}

std::string Fault::whatIsLeft() const
{
    switch (row().operation) {
    case Operation::Rename:
        return contentOf(served("dir/new.bak"));
    case Operation::Delete:
        return contentOf(served("dir/a.bak"));
    case Operation::Upload:
        return contentOf(served(row().path.substr(1)));
    default:
        return contentOf(local("file"));
    }
}

void Fault::expectCode(int code) const
{
    EXPECT_EQ(1U, row().codes.count(code)) << "expected " << namesOf(row().codes) << ", actual " << nameOf(code) << "\n"
                                           << row() << "\n"
                                           << row().why;
}

void Fault::expectLeft(int code) const
{
    if (!tellsWhatIsLeft(code)) {
        return;
    }
    const Left& left = *row().left;
    const std::string actual = whatIsLeft();
    std::string expected = left.bytes ? randomBytes(*left.bytes) : left.text;
    if (left.orLess && actual.size() < expected.size()) {
        expected.resize(actual.size());
    }
    EXPECT_TRUE(sameBytes(expected, actual)) << row();
}
