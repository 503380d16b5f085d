#include <QApplication>
#include <gtest/gtest.h>
#include <memory>

namespace {

// The widgets need an application; the tests run it on the offscreen platform.
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
    char name_[13] = "editor_tests";
    char* argv_[2] = {name_, nullptr};
    std::unique_ptr<QApplication> application_;
};

[[maybe_unused]] ::testing::Environment* const application =
    ::testing::AddGlobalTestEnvironment(new Application);

} // namespace
