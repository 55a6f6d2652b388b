#include "processes/DesktopApplications.h"
#include "processes/DesktopEntry.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace corvel {
namespace {

using ::testing::ElementsAre;
using ::testing::Field;
using ::testing::Optional;

TEST(DesktopEntry, ReadsTheApplicationGroupOnly) {
    const auto entry = DesktopEntry::parse(
        "# comment\n"
        "[Desktop Entry]\n"
        "Type=Application\n"
        "Name=Firefox ESR\n"
        "Name[de]=Firefox ESR (Deutsch)\n"
        "Exec=/usr/lib/firefox-esr/firefox-esr %u\n"
        "StartupWMClass=Firefox-esr\n"
        "\n"
        "[Desktop Action new-window]\n"
        "Name=New Window\n"
        "Exec=/usr/lib/firefox-esr/firefox-esr --new-window %u\n",
        "/usr/share/applications/firefox-esr.desktop");
    ASSERT_TRUE(entry);
    EXPECT_EQ(*entry, (DesktopEntry{"firefox-esr",
                                    "Firefox ESR",
                                    "/usr/share/applications/firefox-esr.desktop",
                                    {"/usr/lib/firefox-esr/firefox-esr"},
                                    "firefox-esr",
                                    "Firefox-esr"}));
}

TEST(DesktopEntry, OnlyVisibleApplicationsWithACommandCount) {
    const char* const rejected[] = {
        "[Desktop Entry]\nType=Link\nName=Docs\nURL=https://example.org\n",
        "[Desktop Entry]\nType=Application\nName=Gone\nExec=gone\nHidden=true\n",
        "[Desktop Entry]\nType=Application\nExec=nameless\n",
        "[Desktop Entry]\nType=Application\nName=No command\n",
        "[Desktop Entry]\nType=Application\nName=Broken\nExec=\"unterminated\n",
        "[Desktop Entry]\nType=Application\nName=Only codes\nExec=%U\n",
        "Type=Application\nName=Outside\nExec=outside\n",
    };
    for (const char* text : rejected) EXPECT_FALSE(DesktopEntry::parse(text, "/x/y.desktop")) << text;
}

TEST(DesktopEntry, ExecQuotingEscapesAndFieldCodes) {
    struct Case {
        const char* exec;
        std::vector<std::string> words;
    };
    const Case cases[] = {
        {"gedit %U", {"gedit"}},
        {"\"/opt/My App/run\" --flag %f", {"/opt/My App/run", "--flag"}},
        // String escapes first ("\\\\" is one backslash), then the quoting rules.
        {R"(sh -c "echo \\$HOME \\\\ \"quoted\"")", {"sh", "-c", R"(echo $HOME \ "quoted")"}},
        {"printf 100%%", {"printf", "100%"}},
        // "\\s" is a space, which separates words unless quoted.
        {"\"My\\sApp\" a\\sb", {"My App", "a", "b"}},
        {"  spaced   out  ", {"spaced", "out"}},
    };
    for (const auto& test : cases) EXPECT_THAT(DesktopEntry::splitExec(test.exec), Optional(test.words)) << test.exec;
    EXPECT_EQ(DesktopEntry::splitExec("\"open"), std::nullopt);
}

TEST(DesktopEntry, ProgramNameSkipsEnvAndIgnoresSharedLaunchers) {
    const auto nameOf = [](const std::string& exec) {
        const auto entry =
            DesktopEntry::parse("[Desktop Entry]\nType=Application\nName=X\nExec=" + exec + "\n", "/a/x.desktop");
        return entry ? entry->executableName : std::nullopt;
    };
    EXPECT_EQ(nameOf("env GDK_BACKEND=x11 -u FOO /usr/bin/inkscape %F"), "inkscape");
    EXPECT_EQ(nameOf("/usr/bin/python3 /usr/share/meld/meld"), std::nullopt);
    EXPECT_EQ(nameOf("python3.11 -m thing"), std::nullopt);
    EXPECT_EQ(nameOf("/usr/bin/flatpak run org.gimp.GIMP"), std::nullopt);
    EXPECT_EQ(nameOf("env"), std::nullopt);
}

TEST(DesktopApplications, PersonalEntriesComeFirstAndHideSystemOnes) {
    testing::TemporaryFolder folder;
    const auto entry = [](const std::string& name, const std::string& exec, const std::string& extra = "") {
        return "[Desktop Entry]\nType=Application\nName=" + name + "\nExec=" + exec + "\n" + extra;
    };
    folder.write("home/.local/share/applications/editor.desktop", entry("My Editor", "myeditor"));
    folder.write("home/.local/share/applications/game.desktop", entry("Game", "game", "Hidden=true\n"));
    folder.write("share/applications/editor.desktop", entry("System Editor", "editor"));
    folder.write("share/applications/game.desktop", entry("Game", "game"));
    folder.write("share/applications/viewer.desktop", entry("Viewer", "viewer"));
    folder.write("share/applications/readme.txt", "not an entry");
    folder.write("share/applications/sub/nested.desktop", entry("Nested", "nested"));
    folder.write("more/applications/viewer.desktop", entry("Other Viewer", "viewer2"));

    const Environment environment{{"XDG_DATA_DIRS", folder.path("share") + ":relative:" + folder.path("more")}};
    EXPECT_THAT(DesktopApplications::folders(environment, folder.path("home")),
                ElementsAre(folder.path("home/.local/share/applications"), folder.path("share/applications"),
                            folder.path("more/applications")));
    EXPECT_THAT(DesktopApplications::read(environment, folder.path("home")),
                ElementsAre(Field(&DesktopEntry::name, "My Editor"), Field(&DesktopEntry::name, "Viewer")));

    const Environment standard{{"XDG_DATA_HOME", folder.path("home/.local/share")}};
    EXPECT_THAT(DesktopApplications::folders(standard, "/nowhere"),
                ElementsAre(folder.path("home/.local/share/applications"), "/usr/local/share/applications",
                            "/usr/share/applications"));
}

}  // namespace
}  // namespace corvel
