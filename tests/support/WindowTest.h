#pragma once

#include "settings/SettingsStore.h"

#include <QApplication>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <functional>
#include <gtest/gtest.h>
#include <memory>

namespace korvel::testing {

// Runs act on the modal dialog of type T once it shows.
template <typename T> void WhenDialogShows(std::function<void(T&)> act) {
    QTimer::singleShot(0, [act] {
        auto* dialog = qobject_cast<T*>(QApplication::activeModalWidget());
        ASSERT_NE(dialog, nullptr);
        act(*dialog);
    });
}

// A window W (the main window or the editor view) on the screen over a settings file of its own,
// in a folder that also takes the test's files.
template <typename W> class WindowTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(dir_.isValid());
        store_ = std::make_unique<SettingsStore>(dir_.filePath(QStringLiteral("settings.ini")));
        makeWindow();
    }
    // A new window, after the old one has written its settings back.
    void makeWindow() {
        window_.reset();
        window_ = std::make_unique<W>(*store_);
        window_->resize(400, 300);
        window_->show();
        window_->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(window_.get()));
    }
    QString writeFile(const QString& name, const QByteArray& bytes) const {
        const QString path = dir_.filePath(name);
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        return path;
    }
    static QByteArray readFile(const QString& path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<unreadable>");
    }

    QTemporaryDir dir_;
    std::unique_ptr<SettingsStore> store_;
    std::unique_ptr<W> window_;
};

} // namespace korvel::testing
