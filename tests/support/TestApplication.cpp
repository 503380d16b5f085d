#include <QApplication>
#include <gtest/gtest.h>
#include <memory>

namespace {

// Widgets need an application. It lives for the whole test program, from before the first test
// to after the last, on the offscreen platform unless the caller asked for another.
class Application : public ::testing::Environment {
public:
    void SetUp() override {
        if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
            qputenv("QT_QPA_PLATFORM", "offscreen");
        application_ = std::make_unique<QApplication>(argc_, argv_);
    }
    void TearDown() override { application_.reset(); }

private:
    int argc_ = 1;
    char name_[12] = "korvel_test";
    char* argv_[2] = {name_, nullptr};
    std::unique_ptr<QApplication> application_;
};

[[maybe_unused]] ::testing::Environment* const application =
    ::testing::AddGlobalTestEnvironment(new Application);

} // namespace
