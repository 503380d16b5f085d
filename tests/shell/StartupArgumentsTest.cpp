#include "shell/StartupArguments.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace korvel {
namespace {

TEST(TrimmedCommandLinePath, FollowsTheStartUpRuleAndNoOther) {
    const struct {
        const char* given;
        const char* path;
    } rows[] = {
        {"  plain.txt \t", "plain.txt"},
        {"\"quoted name.txt\"", "quoted name.txt"},
        {"\" spaced \" trailing words", "spaced"},
        {"\"\"empty token.txt\"\"", ""}, // the first quoted token is the path
        {"\"unclosed.txt", "unclosed.txt"},
        {"say \"hi\".txt", "say \"hi\".txt"}, // quotes inside a name stay
        {"ends with quote\"", "ends with quote\""},
        {"\"\"", ""},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(TrimmedCommandLinePath(QString::fromUtf8(row.given)), QString::fromUtf8(row.path))
            << row.given;
    }
}

TEST(SplitAtDoubleDash, KeepsEveryWordAfterTheFirstDoubleDashFromQt) {
    std::vector<std::string> words = {"korveledit", "-platform", "offscreen", "--",
                                      "-style",     "--",        "b.txt"};
    std::vector<char*> argv;
    for (std::string& word : words)
        argv.push_back(word.data());
    const SplitArguments split = SplitAtDoubleDash(static_cast<int>(argv.size()), argv.data());
    ASSERT_EQ(split.forQt.size(), 4u);
    EXPECT_STREQ(split.forQt[0], "korveledit");
    EXPECT_STREQ(split.forQt[2], "offscreen");
    EXPECT_EQ(split.forQt[3], nullptr);
    EXPECT_EQ(split.fileNames, (QStringList{"-style", "--", "b.txt"}));
}

TEST(StartupFileOf, OneAbsolutePathOrTheOptionThatWasNotUnderstood) {
    const QString home = QStringLiteral("/home/user");
    const struct {
        const char* name;
        QStringList leftByQt;
        QStringList fileNames;
        QString path;
        QString unknownOption;
        QStringList ignored;
    } rows[] = {
        {"nothing", {}, {}, {}, {}, {}},
        {"relative", {"memo.txt"}, {}, "/home/user/memo.txt", {}, {}},
        {"dot slash", {"./-style"}, {}, "/home/user/-style", {}, {}},
        {"absolute", {"/tmp/a.txt"}, {}, "/tmp/a.txt", {}, {}},
        {"after double dash", {}, {"-style"}, "/home/user/-style", {}, {}},
        {"after double dash as it stands", {}, {" \"x\" "}, "/home/user/ \"x\" ", {}, {}},
        {"quoted", {"\"../a b.txt\""}, {}, "/home/a b.txt", {}, {}},
        {"lone dash is a name", {"-"}, {}, "/home/user/-", {}, {}},
        {"unknown option", {"-stlye", "a.txt"}, {}, {}, "-stlye", {}},
        {"blank skipped", {"  ", "a.txt"}, {}, "/home/user/a.txt", {}, {}},
        {"second name", {"a.txt"}, {"b.txt"}, "/home/user/a.txt", {}, {"b.txt"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const StartupFile file = StartupFileOf(row.leftByQt, row.fileNames, home);
        EXPECT_EQ(file.path, row.path);
        EXPECT_EQ(file.unknownOption, row.unknownOption);
        EXPECT_EQ(file.ignored, row.ignored);
    }
}

} // namespace
} // namespace korvel
