// The command palette (Ctrl+K): a field over a list of everything the application can open or do
// (screens, disks, volumes, actions). Typing narrows the list, Up and Down move, Enter opens the
// chosen entry and closes the palette, Escape closes it. The search itself is a pure function.
//
//   palette->present({{"Screen", "Dashboard", [&] { window.showScreen(0); }}, …});
#pragma once

#include <QDialog>
#include <QString>
#include <functional>
#include <vector>

class QLineEdit;
class QListWidget;

namespace corvel::desktop {

struct PaletteEntry {
    QString kind;   // "Screen", "Disk", "Volume", "Action"
    QString title;  // what it is called
    std::function<void()> open;
};

namespace PaletteSearch {

// The entries whose kind and title together hold every word of `query` (ignoring case), as
// indices into `entries`: titles beginning with the query first, then titles holding it earlier,
// then the rest, each group in the entries' order. An empty query keeps every entry in order.
std::vector<std::size_t> matches(const std::vector<PaletteEntry>& entries, const QString& query);

}  // namespace PaletteSearch

class CommandPalette : public QDialog {
    Q_OBJECT
public:
    explicit CommandPalette(QWidget* parent = nullptr);

    // Shows the palette over its parent with an empty field and these entries.
    void present(std::vector<PaletteEntry> entries);

    QLineEdit* field() const { return field_; }
    QListWidget* list() const { return list_; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void filter();
    void activate();

    QLineEdit* field_;
    QListWidget* list_;
    std::vector<PaletteEntry> entries_;
    std::vector<std::size_t> shown_;
};

}  // namespace corvel::desktop
