#pragma once

#include <QLabel>

namespace korvel {

// A label for a path: when the text is wider than the label, the middle gives way to "…" so
// that the start and the file name stay readable; the whole text is the tool tip.
class ElidedLabel : public QLabel {
    Q_OBJECT
public:
    explicit ElidedLabel(QWidget* parent = nullptr);

    void setFullText(const QString& text);
    const QString& fullText() const { return fullText_; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void elide();

    QString fullText_;
};

} // namespace korvel
