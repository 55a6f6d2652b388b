// The palette's promises: text stays readable in both themes, categories stay apart, and the
// report and the command line paint with the brand's values rather than colours of their own.
#include "BrandLogo.h"
#include "BrandPalette.h"
#include "Terminal.h"
#include "diagnostics/Severity.h"
#include "report/ReportPalette.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

namespace corvel {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

constexpr std::array<Theme, 2> themes{Theme::light, Theme::dark};

std::size_t occurrences(std::string_view text, std::string_view part) {
    std::size_t count = 0;
    for (auto at = text.find(part); at != std::string_view::npos; at = text.find(part, at + part.size())) ++count;
    return count;
}

TEST(BrandPalette, ContrastAndLuminanceFollowTheWebFormula) {
    EXPECT_NEAR(contrastRatio({0, 0, 0}, {255, 255, 255}), 21.0, 1e-9);
    EXPECT_NEAR(contrastRatio({255, 255, 255}, {0, 0, 0}), 21.0, 1e-9);  // order does not matter
    EXPECT_NEAR(contrastRatio({0x77, 0x77, 0x77}, {255, 255, 255}), 4.48, 0.01);
    EXPECT_EQ((Rgb{0x0f, 0x7c, 0x08}.hex()), "#0f7c08");
}

TEST(BrandPalette, EveryToneAndTheInkAreReadableOnPaperAndPanelInBothThemes) {
    for (const auto theme : themes) {
        const auto& surfaces = BrandPalette::surfaces(theme);
        for (const auto& ground : {surfaces.paper, surfaces.panel}) {
            EXPECT_GE(contrastRatio(surfaces.ink, ground), 7.0) << ground.hex();
            EXPECT_GE(contrastRatio(surfaces.muted, ground), 4.5) << ground.hex();
            EXPECT_GE(contrastRatio(surfaces.accent, ground), 3.0) << ground.hex();
            for (const auto tone : {Tone::plain, Tone::good, Tone::notice, Tone::caution, Tone::bad, Tone::muted})
                EXPECT_GE(contrastRatio(BrandPalette::tone(tone, theme), ground), 4.5)
                    << "tone " << static_cast<int>(tone) << " on " << ground.hex();
        }
    }
}

TEST(BrandPalette, SeveritiesAndCategoriesAreEachTheirOwnColour) {
    for (const auto theme : themes) {
        std::set<std::string> severityColours;
        for (const auto severity : allCases<Severity>())
            severityColours.insert(BrandPalette::tone(toneOf(severity), theme).hex());
        EXPECT_EQ(severityColours.size(), allCases<Severity>().size());
    }
    // Adjacent treemap tiles must be told apart: no two categories closer than a clear step, and
    // the dark tile label readable on every one.
    const auto categories = allCases<SpaceCategory>();
    const auto ink = BrandPalette::surfaces(Theme::light).ink;
    for (std::size_t i = 0; i < categories.size(); ++i) {
        const auto first = BrandPalette::category(categories[i]);
        EXPECT_GE(contrastRatio(ink, first), 4.5) << label(categories[i]);
        for (std::size_t j = i + 1; j < categories.size(); ++j) {
            const auto second = BrandPalette::category(categories[j]);
            const double distance =
                std::hypot(first.red - second.red, first.green - second.green, first.blue - second.blue);
            EXPECT_GE(distance, 24.0) << label(categories[i]) << " and " << label(categories[j]);
        }
    }
}

TEST(BrandPalette, TheReportPaintsWithTheBrandValues) {
    const auto css = ReportPalette::cssVariables();
    const auto& page = BrandPalette::surfaces(Theme::light);
    EXPECT_THAT(css, HasSubstr("--accent:" + page.accent.hex() + ";"));
    EXPECT_THAT(css, HasSubstr("--paper:" + page.paper.hex() + ";"));
    for (const auto severity : allCases<Severity>()) {
        const auto tone = toneOf(severity);
        const auto brand = BrandPalette::tone(tone, Theme::light).hex();
        EXPECT_EQ(ReportPalette::toneColour(tone), brand);
        EXPECT_THAT(css, HasSubstr("--tone-" + std::string(ReportPalette::toneName(tone)) + ":" + brand + ";"));
    }
    for (const auto category : allCases<SpaceCategory>())
        EXPECT_EQ(ReportPalette::categoryColour(category), BrandPalette::category(category).hex());
}

TEST(BrandPalette, TheCommandLineUsesBrandColoursOnlyOnTrueColourTerminals) {
    const auto bad = BrandPalette::tone(Tone::bad, Theme::dark);
    const auto code =
        "38;2;" + std::to_string(bad.red) + ";" + std::to_string(bad.green) + ";" + std::to_string(bad.blue);
    EXPECT_THAT(cli::Style(true, true).tone(Tone::bad, "full"), AllOf(HasSubstr(code), HasSubstr("full")));
    EXPECT_THAT(cli::Style(true, false).tone(Tone::bad, "full"), Not(HasSubstr("38;2;")));
    EXPECT_EQ(cli::Style(false, true).tone(Tone::bad, "full"), "full");  // NO_COLOR still wins
    EXPECT_EQ(cli::Style(true, true).tone(Tone::plain, "x"), "x");
}

TEST(BrandLogo, TheOneColourMarkTakesTheGivenColourEverywhere) {
    const auto mono = BrandLogo::monoSvg();
    const auto shapes = occurrences(mono, "#000000");
    ASSERT_GE(shapes, 3u);
    const auto tinted = BrandLogo::tintedMono({0xb3, 0x26, 0x1e});
    EXPECT_EQ(occurrences(tinted, "#b3261e"), shapes);
    EXPECT_THAT(tinted, AllOf(Not(HasSubstr("#000000")), HasSubstr("<svg")));
    // The full-colour mark carries the accent it is drawn with and needs nothing from outside.
    EXPECT_THAT(BrandLogo::svg(), AllOf(HasSubstr(BrandPalette::accent(Theme::dark).hex()), Not(HasSubstr("href"))));
}

}  // namespace
}  // namespace corvel
