#pragma once

#include <QDialog>
#include <QString>

class QCheckBox;

namespace korvel {

// Properties of a file or folder (commands 32807 and 32893): path, size, modification time and
// the read-only state, which the user may change. OK applies the change.
class PropertiesDialog : public QDialog {
    Q_OBJECT
public:
    explicit PropertiesDialog(const QString& path, QWidget* parent = nullptr);

    bool isReadOnlyChecked() const;
    void setReadOnlyChecked(bool readOnly);
    // Carries a changed read-only state to the disk; false, after message 30507, when it fails.
    bool apply();

    void accept() override;

private:
    QString path_;
    bool readOnly_ = false;
    QCheckBox* readOnlyBox_ = nullptr;
};

} // namespace korvel
