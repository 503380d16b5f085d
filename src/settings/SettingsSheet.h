#pragma once

#include "settings/SettingsSeams.h"

#include <QDialog>
#include <QList>

class QTabWidget;

namespace korvel {

class CPPageColor;
class CPPageEdit;
class CPPageFile;
class CPPageFont;
class CPPageTap;
class SettingsPage;
class SettingsStore;

// The settings sheet: the pages "カラー", "編集・文字コード", "拡張子・マクロ", "フォント" and
// "タップ" on tabs. OK checks every page, starting with the one in front; a page that refuses
// comes to the front and the sheet stays open. Only when all pages agree is anything written.
class SettingsSheet : public QDialog {
    Q_OBJECT
public:
    SettingsSheet(SettingsStore& store, const SettingsSeams& seams, QWidget* parent = nullptr);

    QTabWidget* tabs() const { return tabs_; }
    CPPageColor* colorPage() const { return color_; }
    CPPageEdit* editPage() const { return edit_; }
    CPPageFile* filePage() const { return file_; }
    CPPageFont* fontPage() const { return font_; }
    CPPageTap* tapPage() const { return tap_; }

    void accept() override;

private:
    void addPage(SettingsPage* page);

    QTabWidget* tabs_;
    QList<SettingsPage*> pages_;
    CPPageColor* color_;
    CPPageEdit* edit_;
    CPPageFile* file_;
    CPPageFont* font_;
    CPPageTap* tap_;
};

// Shows the sheet; true when it was confirmed and the settings were written.
bool RunSettingsSheet(SettingsStore& store, const SettingsSeams& seams, QWidget* parent);

} // namespace korvel
