// Human output helpers: colour only on a terminal (never with NO_COLOR), aligned tables, usage
// bars. Everything writes to a stream so tests can read what a person would see.
#pragma once

#include "common/EnumTable.h"
#include "common/Environment.h"
#include "common/Json.h"

#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

namespace corvel::cli {

class Style {
public:
    // `trueColour`: the terminal takes 24-bit colours (COLORTERM=truecolor), so tones use the
    // brand palette rather than the terminal's own eight colours.
    explicit Style(bool enabled, bool trueColour = false) : enabled_(enabled), trueColour_(enabled && trueColour) {}
    bool enabled() const { return enabled_; }
    std::string bold(std::string_view text) const { return wrap("1", text); }
    std::string dim(std::string_view text) const { return wrap("2", text); }
    std::string red(std::string_view text) const { return wrap("31", text); }
    std::string green(std::string_view text) const { return wrap("32", text); }
    std::string yellow(std::string_view text) const { return wrap("33", text); }
    std::string blue(std::string_view text) const { return wrap("34", text); }
    std::string cyan(std::string_view text) const { return wrap("36", text); }
    // The one place a tone (severity, health, risk, SMART) becomes a colour.
    std::string tone(Tone tone, std::string_view text) const;

private:
    std::string wrap(const char* code, std::string_view text) const;
    bool enabled_;
    bool trueColour_;
};

// Columns of text, padded to the widest cell (by displayed characters, ignoring colour codes).
class Table {
public:
    enum class Align { left, right };

    explicit Table(std::vector<Align> alignment = {}) : alignment_(std::move(alignment)) {}
    void addRow(std::vector<std::string> cells) { rows_.push_back(std::move(cells)); }
    bool empty() const { return rows_.empty(); }
    // Each row on its own line, cells separated by two spaces, prefixed by `indent`.
    void print(std::ostream& out, std::string_view indent = "") const;

private:
    std::vector<Align> alignment_;
    std::vector<std::vector<std::string>> rows_;
};

// Characters a terminal shows for `text`: UTF-8 code points outside colour escape sequences.
std::size_t displayWidth(std::string_view text);

// A bar of `width` cells, filled in proportion to `fraction` (clamped to 0…1).
std::string usageBar(double fraction, int width);

// "1,234,567": counts of files and folders, grouped so that people can read them at a glance.
std::string groupedCount(std::int64_t value);

// The width of the terminal on stderr (or $COLUMNS, else 80).
std::size_t terminalColumns(const Environment& environment);

// `text` cut to `width` displayed characters by replacing its middle with "…", so that both the
// start of a path and its file name stay readable.
std::string elideMiddle(std::string_view text, std::size_t width);

// "42%" for 0.42.
std::string percent(double fraction);

}  // namespace corvel::cli
