#include "DesktopTests.h"
#include "shell/AppOptions.h"

#include <QProcess>

namespace corvel::desktop::testing {

class AppOptionsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void readsEveryOption() {
        const auto parsed = AppOptions::parse({"--replay", "/r", "--now=2026-11-02T10:00:00Z", "--data-dir", "/d",
                                               "--space-folder=/s", "--screenshots", "/p"});
        QVERIFY(!parsed.error);
        const auto& options = parsed.options;
        QCOMPARE(options.replay, std::optional<std::string>("/r"));
        QCOMPARE(options.now, std::optional<std::string>("2026-11-02T10:00:00Z"));
        QCOMPARE(options.dataDir, std::optional<std::string>("/d"));
        QCOMPARE(options.spaceFolder, std::optional<std::string>("/s"));
        QCOMPARE(options.screenshots, std::optional<std::string>("/p"));
        QCOMPARE(options.agent, AppOptions::AgentChange::none);
        QCOMPARE(AppOptions::parse({"--agent-unregister"}).options.agent, AppOptions::AgentChange::unregisterAgent);
    }

    void badInputIsOneLineNamingIt_data() {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("error");
        QTest::newRow("unknown") << QStringList{"--frobnicate"} << "unknown argument '--frobnicate' (see --help)";
        QTest::newRow("missing value") << QStringList{"--replay"} << "--replay needs a value";
        QTest::newRow("empty value") << QStringList{"--data-dir="} << "--data-dir needs a value";
        QTest::newRow("twice") << QStringList{"--now", "a", "--now", "b"} << "--now was given twice";
        QTest::newRow("both agent flags") << QStringList{"--agent-register", "--agent-unregister"}
                                          << "--agent-register and --agent-unregister exclude each other";
        QTest::newRow("positional") << QStringList{"status"} << "unknown argument 'status' (see --help)";
    }

    void badInputIsOneLineNamingIt() {
        QFETCH(QStringList, arguments);
        QFETCH(QString, error);
        std::vector<std::string> raw;
        for (const auto& argument : arguments) raw.push_back(argument.toStdString());
        const auto parsed = AppOptions::parse(raw);
        QVERIFY(parsed.error);
        QCOMPARE(QString::fromStdString(*parsed.error), error);
    }

    // The real program: no window, one line. Without consent nothing is registered, and the
    // refusal says so; unregistering needs no consent.
    void agentFlagsPrintOneLineAndExit() {
        QTemporaryDir home;
        QTemporaryDir data;
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.insert("HOME", home.path());
        environment.insert("XDG_CONFIG_HOME", home.path() + "/config");
        environment.insert("QT_QPA_PLATFORM", "none-such-platform");  // no display may be asked for
        const auto run = [&](const char* flag, QString& out, QString& err) {
            QProcess program;
            program.setProcessEnvironment(environment);
            program.start(CORVEL_DESKTOP_BINARY,
                          {"--replay", QString::fromStdString(fixtureMachine("linux-workstation")), "--data-dir",
                           data.path(), flag});
            QVERIFY(program.waitForFinished(30000));
            QCOMPARE(program.exitCode(), 0);
            out = QString::fromUtf8(program.readAllStandardOutput());
            err = QString::fromUtf8(program.readAllStandardError());
        };
        QString out;
        QString err;
        run("--agent-register", out, err);
        QVERIFY(out.isEmpty());
        QCOMPARE(err.count('\n'), 1);
        QVERIFY2(err.startsWith("agent: could not register: "), qPrintable(err));
        QVERIFY(!QDir(home.path() + "/config").exists());
        run("--agent-unregister", out, err);
        QCOMPARE(out.count('\n'), 1);
        QVERIFY2(out.startsWith("agent: "), qPrintable(out + err));
    }

    void badReplayIsUsageError() {
        QProcess program;
        program.start(CORVEL_DESKTOP_BINARY, {"--replay", "/no/such/recording"});
        QVERIFY(program.waitForFinished(30000));
        QCOMPARE(program.exitCode(), 2);
        const auto err = QString::fromUtf8(program.readAllStandardError());
        QCOMPARE(err.count('\n'), 1);
        QVERIFY2(err.contains("/no/such/recording"), qPrintable(err));
    }
};

std::unique_ptr<QObject> makeAppOptionsTest() {
    return std::make_unique<AppOptionsTest>();
}

}  // namespace corvel::desktop::testing

#include "AppOptionsTest.moc"
