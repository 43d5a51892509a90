#include "Linux/Applications/ApplicationIdentity.h"

#include "Applications.h"

#include <gmock/gmock.h>

namespace orvanta {

namespace {

constexpr qint64 ownProcess = 500;

class ApplicationIdentityTest : public testing::Test {
protected:
    QString idOf(const Window& window) {
        const auto application = identity.identify(window);
        EXPECT_TRUE(!application || application->processIdentifier == window.processIdentifier);
        return application ? application->bundleIdentifier : QStringLiteral("none");
    }

    static Window window(const char* wmInstance, const char* wmClass,
                         std::optional<qint64> process = std::nullopt) {
        Window window;
        window.wmInstance = QString::fromUtf8(wmInstance);
        window.wmClass = QString::fromUtf8(wmClass);
        window.processIdentifier = process;
        return window;
    }

    void writeFlatpak(const char* process, const QByteArray& content) {
        processes.write(QString::fromUtf8(process) + QStringLiteral("/root/.flatpak-info"),
                        content);
    }

    void runs(const char* process, const char* program) {
        const QString folder = processes.path(QString::fromUtf8(process));
        QDir().mkpath(folder);
        ASSERT_TRUE(QFile::link(QString::fromUtf8(program), folder + QStringLiteral("/exe")));
    }

    TemporaryFolder applications;
    TemporaryFolder processes;
    DesktopEntries entries{{applications.path()}};
    ApplicationIdentity identity{entries, ownProcess, QStringLiteral("com.brindlework.orvanta"),
                                 processes.path()};
};

TEST_F(ApplicationIdentityTest, EachSourcePrecedesTheNext) {
    applications.writeEntry(QStringLiteral("org.sandbox.App"));
    applications.writeEntry(QStringLiteral("org.gtk.App"));
    applications.writeEntry(QStringLiteral("org.kde.app"));
    applications.writeEntry(QStringLiteral("by-class"), "StartupWMClass=Klass\n");
    applications.writeEntry(QStringLiteral("by-instance"), "StartupWMClass=instance\n");
    applications.writeEntry(QStringLiteral("klass"));
    applications.writeEntry(QStringLiteral("org.last.Component"));
    applications.writeEntry(QStringLiteral("by-program"), "Exec=cat\n");
    writeFlatpak("7", "[Application]\nname=org.sandbox.App\n");
    runs("7", "/bin/cat");
    runs("8", "/usr/bin/cat (deleted)");

    Window all = window("instance", "Klass", 7);
    all.gtkApplicationId = QStringLiteral("org.gtk.App");
    all.desktopFile = QStringLiteral("org.kde.app");
    EXPECT_EQ(idOf(all), QStringLiteral("org.sandbox.App"));
    all.processIdentifier = 8;
    EXPECT_EQ(idOf(all), QStringLiteral("org.gtk.App"));
    all.gtkApplicationId = QStringLiteral("org.gtk.NotInstalled");
    EXPECT_EQ(idOf(all), QStringLiteral("org.kde.app"));
    all.desktopFile = QStringLiteral("/usr/share/applications/org.kde.app.desktop");
    EXPECT_EQ(idOf(all), QStringLiteral("org.kde.app"));
    all.desktopFile.clear();
    EXPECT_EQ(idOf(all), QStringLiteral("by-class"));
    EXPECT_EQ(idOf(window("instance", "KLASS", 8)), QStringLiteral("by-instance"));
    EXPECT_EQ(idOf(window("other", "KLASS", 8)), QStringLiteral("klass"));
    EXPECT_EQ(idOf(window("component", "Other", 8)), QStringLiteral("org.last.Component"));
    EXPECT_EQ(idOf(window("other", "Other", 8)), QStringLiteral("by-program"));
}

TEST_F(ApplicationIdentityTest, AWindowThatNoEntryMatchesIsNamedByWhatItTells) {
    runs("9", "/opt/tool/Tool (deleted)");
    EXPECT_EQ(idOf(window("instance", "Klass", 9)), QStringLiteral("Klass"));
    EXPECT_EQ(idOf(window("instance", "", 9)), QStringLiteral("instance"));
    EXPECT_EQ(idOf(window("", "", 9)), QStringLiteral("Tool"));
    EXPECT_EQ(idOf(window("", "", 10)), QStringLiteral("none"));
    EXPECT_EQ(idOf(window("", "")), QStringLiteral("none"));
    const auto unknown = identity.identify(window("", "Klass"));
    EXPECT_FALSE(unknown->localizedName);
    EXPECT_FALSE(unknown->installLocation);
}

TEST_F(ApplicationIdentityTest, AMatchCarriesNameAndLocation) {
    applications.writeEntry(QStringLiteral("app"), "Name[pt_BR]=Aplicativo\n");
    const auto application = identity.identify(window("app", "App"));
    EXPECT_EQ(application->localizedName, QStringLiteral("Aplicativo"));
    EXPECT_EQ(application->installLocation, applications.path(QStringLiteral("app.desktop")));
}

TEST_F(ApplicationIdentityTest, OwnWindowsAreOursWhateverTheySay) {
    applications.writeEntry(QStringLiteral("other"));
    writeFlatpak("500", "[Application]\nname=org.sandbox.App\n");
    EXPECT_EQ(idOf(window("other", "Other", ownProcess)),
              QStringLiteral("com.brindlework.orvanta"));
    applications.writeEntry(QStringLiteral("com.brindlework.orvanta"), "Name=Orvanta\n");
    EXPECT_EQ(identity.identify(window("", "", ownProcess))->localizedName,
              QStringLiteral("Orvanta"));
}

TEST_F(ApplicationIdentityTest, BrokenSandboxMetadataIsPassedOver) {
    writeFlatpak("1", "");
    writeFlatpak("2", "[Application]\nname=\n");
    writeFlatpak("3", "[Instance]\nname=org.sandbox.App\n");
    writeFlatpak("4", "[Application]\nname=\xff\xfe\n");
    writeFlatpak("5", "[Application]\nname=org." + QByteArray(300, 'x') + "\n");
    writeFlatpak("6", QByteArray(1 << 20, '#') + "\n[Application]\nname=org.sandbox.App\n");
    writeFlatpak("elsewhere", "[Application]\nname=org.sandbox.App\n");
    QDir().mkpath(processes.path(QStringLiteral("7/root")));
    QFile::link(processes.path(QStringLiteral("elsewhere/root/.flatpak-info")),
                processes.path(QStringLiteral("7/root/.flatpak-info")));
    QDir().mkpath(processes.path(QStringLiteral("8/root/.flatpak-info")));
    for (qint64 process = 1; process <= 8; ++process) {
        EXPECT_EQ(idOf(window("", "Klass", process)), QStringLiteral("Klass")) << process;
    }
    writeFlatpak("9", "[Application]\nname=org.not.Exported\n");
    EXPECT_EQ(idOf(window("", "Klass", 9)), QStringLiteral("org.not.Exported"));
}

TEST_F(ApplicationIdentityTest, AnApplicationInstalledMeanwhileIsRecognised) {
    EXPECT_EQ(idOf(window("fresh", "Fresh")), QStringLiteral("Fresh"));
    applications.writeEntry(QStringLiteral("org.example.fresh"));
    EXPECT_EQ(idOf(window("fresh", "Fresh")), QStringLiteral("org.example.fresh"));
}

} // namespace

} // namespace orvanta
