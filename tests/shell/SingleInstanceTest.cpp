// The hand-over between starts: the record, and the instance's socket taking only whole,
// well-formed records from this user.
#include "shell/SingleInstance.h"

#include "shell/HandoverRecord.h"

#include <QLocalServer>
#include <QLocalSocket>
#include <QTemporaryDir>
#include <QTest>
#include <cstring>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace korvel {
namespace {

std::vector<std::byte> Record(std::uint32_t identifier, std::uint32_t count,
                              std::initializer_list<char16_t> units) {
    std::vector<std::byte> record;
    for (std::uint32_t value : {identifier, count})
        for (int shift = 0; shift < 32; shift += 8)
            record.push_back(static_cast<std::byte>(value >> shift & 0xFF));
    for (char16_t unit : units) {
        record.push_back(static_cast<std::byte>(unit & 0xFF));
        record.push_back(static_cast<std::byte>(unit >> 8));
    }
    return record;
}

TEST(HandoverRecord, PathsComeThroughAndAnythingElseIsRefused) {
    for (std::u16string path : {u"", u"/home/user/a.txt", u"/tmp/日本語\U0001F600.txt"}) {
        const std::vector<std::byte> record = MakeHandoverRecord(path);
        EXPECT_EQ(record.size(), 8 + (path.size() + 1) * 2);
        EXPECT_EQ(ParseHandoverRecord(record), path);
    }
    const struct {
        const char* fault;
        std::vector<std::byte> record;
    } refused[] = {
        {"another identifier", Record(0x1025, 4, {u'a', 0})},
        {"an odd count", Record(0x1024, 3, {u'a', 0})},
        {"no count", Record(0x1024, 0, {})},
        {"a count past the limit", Record(0x1024, 64 * 1024 + 2, {u'a', 0})},
        {"shorter than its count", Record(0x1024, 6, {u'a', 0})},
        {"longer than its count", Record(0x1024, 4, {u'a', 0, 0})},
        {"no terminating 0", Record(0x1024, 4, {u'a', u'b'})},
        {"a 0 inside the path", Record(0x1024, 6, {u'a', 0, 0})},
        {"a header cut short", {std::byte{0x24}, std::byte{0x10}}},
    };
    for (const auto& [fault, record] : refused)
        EXPECT_FALSE(ParseHandoverRecord(record)) << fault;
}

class InstanceSocketTest : public ::testing::Test {
protected:
    void SetUp() override {
        InstanceClaim claim = ClaimInstance(socketPath_);
        ASSERT_TRUE(claim.server);
        ASSERT_FALSE(claim.running);
        receiver_ = std::make_unique<HandoverReceiver>(
            std::move(claim.server), [this](const QString& path) { received_ << path; }, 300);
    }

    // Connects as a later start would, sends bytes, and reads the answer.
    QByteArray send(const std::vector<std::byte>& bytes) {
        QLocalSocket peer;
        peer.connectToServer(socketPath_);
        EXPECT_TRUE(peer.waitForConnected(1000));
        peer.write(reinterpret_cast<const char*>(bytes.data()), qint64(bytes.size()));
        QByteArray answer;
        EXPECT_TRUE(QTest::qWaitFor(
            [&] {
                answer += peer.readAll();
                return peer.state() == QLocalSocket::UnconnectedState || !answer.isEmpty();
            },
            3000));
        return answer;
    }

    QTemporaryDir dir_;
    QString socketPath_ = dir_.filePath(QStringLiteral("instance"));
    std::unique_ptr<HandoverReceiver> receiver_;
    QStringList received_;
};

TEST_F(InstanceSocketTest, TakesWholeRecordsAndDropsTheRest) {
    EXPECT_EQ(send(MakeHandoverRecord(u"/tmp/a.txt")), QByteArray(1, '\1'));
    EXPECT_EQ(send(MakeHandoverRecord(u"")), QByteArray(1, '\1'));
    EXPECT_EQ(received_, (QStringList{QStringLiteral("/tmp/a.txt"), QString()}));
    // Dropped without an answer: a bad record, a record with more after it, half a record and
    // a peer that says nothing (both cut off after the wait).
    std::vector<std::byte> tooMuch = MakeHandoverRecord(u"/tmp/b.txt");
    tooMuch.push_back(std::byte{1});
    std::vector<std::byte> half = MakeHandoverRecord(u"/tmp/c.txt");
    half.resize(half.size() / 2);
    for (const auto& bytes : {Record(0x1025, 4, {u'a', 0}), tooMuch, half, {}})
        EXPECT_TRUE(send(bytes).isEmpty());
    EXPECT_EQ(received_.size(), 2);
}

// A later start finds the instance; a socket left by one that crashed is taken over.
TEST_F(InstanceSocketTest, LaterStartsFindTheInstanceAndStaleSocketsAreTakenOver) {
    InstanceClaim later = ClaimInstance(socketPath_);
    ASSERT_TRUE(later.running);
    EXPECT_FALSE(later.server);

    const QString stalePath = dir_.filePath(QStringLiteral("stale"));
    const int left = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, qPrintable(stalePath), sizeof address.sun_path - 1);
    ASSERT_EQ(::bind(left, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    ::close(left); // the file stays, nobody listens
    InstanceClaim takeover = ClaimInstance(stalePath);
    EXPECT_TRUE(takeover.server);
    EXPECT_FALSE(takeover.running);
}

} // namespace
} // namespace korvel
