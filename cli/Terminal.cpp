#include "Terminal.h"

#include "BrandPalette.h"

#include <fmt/format.h>

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>

namespace corvel::cli {

std::string Style::wrap(const char* code, std::string_view text) const {
    if (!enabled_) return std::string(text);
    return "\033[" + std::string(code) + "m" + std::string(text) + "\033[0m";
}

std::string Style::tone(Tone tone, std::string_view text) const {
    if (trueColour_ && tone != Tone::plain && tone != Tone::muted) {
        // Terminals are most often dark: the brand's dark-theme tones are the readable ones there.
        const auto colour = BrandPalette::tone(tone, Theme::dark);
        const auto code = fmt::format("38;2;{};{};{}", colour.red, colour.green, colour.blue);
        return tone == Tone::bad ? wrap(code.c_str(), bold(text)) : wrap(code.c_str(), text);
    }
    switch (tone) {
        case Tone::good:
            return green(text);
        case Tone::notice:
            return blue(text);
        case Tone::caution:
            return yellow(text);
        case Tone::bad:
            return red(bold(text));
        case Tone::muted:
            return dim(text);
        case Tone::plain:
            break;
    }
    return std::string(text);
}

std::size_t displayWidth(std::string_view text) {
    std::size_t width = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto c = static_cast<unsigned char>(text[i]);
        if (c == 0x1B) {  // skip an escape sequence up to its final letter
            while (i < text.size() && !std::isalpha(static_cast<unsigned char>(text[i]))) ++i;
            continue;
        }
        if ((c & 0xC0) != 0x80) ++width;
    }
    return width;
}

std::size_t terminalColumns(const Environment& environment) {
    struct winsize size {};
    if (::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 10) return size.ws_col;
    if (auto columns = lookup(environment, "COLUMNS")) {
        try {
            const long value = std::stol(*columns);
            if (value > 10 && value < 10000) return static_cast<std::size_t>(value);
        } catch (const std::exception&) {
        }
    }
    return 80;
}

std::string elideMiddle(std::string_view text, std::size_t width) {
    if (displayWidth(text) <= width) return std::string(text);
    if (width < 2) return std::string("\u2026").substr(0, width ? 3 : 0);
    // Split by code points so that a multi-byte character is never cut in half.
    std::vector<std::string_view> points;
    for (std::size_t i = 0; i < text.size();) {
        std::size_t length = 1;
        while (i + length < text.size() && (static_cast<unsigned char>(text[i + length]) & 0xC0) == 0x80) ++length;
        points.push_back(text.substr(i, length));
        i += length;
    }
    const std::size_t keep = width - 1;
    const std::size_t head = keep / 2;
    const std::size_t tail = keep - head;
    std::string result;
    for (std::size_t i = 0; i < head; ++i) result += points[i];
    result += "\u2026";
    for (std::size_t i = points.size() - tail; i < points.size(); ++i) result += points[i];
    return result;
}

void Table::print(std::ostream& out, std::string_view indent) const {
    std::vector<std::size_t> widths;
    for (const auto& row : rows_) {
        if (widths.size() < row.size()) widths.resize(row.size(), 0);
        for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], displayWidth(row[i]));
    }
    for (const auto& row : rows_) {
        std::string line(indent);
        for (std::size_t i = 0; i < row.size(); ++i) {
            const bool last = i + 1 == row.size();
            const auto pad = widths[i] - displayWidth(row[i]);
            const auto align = i < alignment_.size() ? alignment_[i] : Align::left;
            if (i) line += "  ";
            if (align == Align::right) line.append(pad, ' ');
            line += row[i];
            if (align == Align::left && !last) line.append(pad, ' ');
        }
        while (!line.empty() && line.back() == ' ') line.pop_back();
        out << line << '\n';
    }
}

std::string usageBar(double fraction, int width) {
    if (width <= 0) return {};
    if (!std::isfinite(fraction)) fraction = 0;
    fraction = std::clamp(fraction, 0.0, 1.0);
    const int filled = static_cast<int>(std::lround(fraction * width));
    std::string bar;
    for (int i = 0; i < width; ++i) bar += i < filled ? "\u2588" : "\u2591";
    return bar;
}

std::string groupedCount(std::int64_t value) {
    std::string digits = std::to_string(value);
    const int firstDigit = value < 0 ? 1 : 0;
    for (int i = static_cast<int>(digits.size()) - 3; i > firstDigit; i -= 3)
        digits.insert(static_cast<std::size_t>(i), ",");
    return digits;
}

std::string percent(double fraction) {
    if (!std::isfinite(fraction)) fraction = 0;
    return std::to_string(static_cast<long long>(std::lround(fraction * 100))) + "%";
}

}  // namespace corvel::cli
