#include "Linux/Applications/ApplicationIdentity.h"

#include "Testing.h"

using namespace orvanta;

namespace {

constexpr qint64 ownProcess = 500;

class ApplicationIdentityTest : public testing::Test {
protected:
    QString idOf(const Window& window) {
        const auto application = identity.identify(window);
        EXPECT_TRUE(!application || application->processIdentifier == window.processIdentifier);
        return application ? application->bundleIdentifier : u"none"_s;
    }
    static Window window(const char* wmInstance, const char* wmClass,
                         std::optional<qint64> process = std::nullopt) {
        Window window;
        window.wmInstance = QString::fromUtf8(wmInstance);
        window.wmClass = QString::fromUtf8(wmClass);
        window.processIdentifier = process;
        return window;
    }
    void writeFlatpak(int process, const QByteArray& content) {
        processes.write(u"%1/root/.flatpak-info"_s.arg(process), content);
    }
    void runs(int process, const QString& program) {
        processes.link(program, u"%1/exe"_s.arg(process));
    }

    TemporaryFolder applications;
    TemporaryFolder processes;
    DesktopEntries entries{{applications.path()}};
    ApplicationIdentity identity{entries, ownProcess, u"com.brindlework.orvanta"_s,
                                 processes.path()};
};

TEST_F(ApplicationIdentityTest, EachSourcePrecedesTheNext) {
    applications.writeEntry(u"org.sandbox.App"_s);
    applications.writeEntry(u"org.gtk.App"_s, "Name[pt_BR]=Aplicativo\n");
    applications.writeEntry(u"org.kde.app"_s);
    applications.writeEntry(u"by-class"_s, "StartupWMClass=Klass\n");
    applications.writeEntry(u"by-instance"_s, "StartupWMClass=instance\n");
    applications.writeEntry(u"klass"_s);
    applications.writeEntry(u"org.last.Component"_s);
    applications.writeEntry(u"by-program"_s, "Exec=cat\n");
    writeFlatpak(7, "[Application]\nname=org.sandbox.App\n");
    runs(7, u"/bin/cat"_s);
    runs(8, u"/usr/bin/cat (deleted)"_s);
    runs(9, u"/opt/tool/Tool (deleted)"_s);

    Window all = window("instance", "Klass", 7);
    all.gtkApplicationId = u"org.gtk.App"_s;
    all.desktopFile = u"org.kde.app"_s;
    EXPECT_EQ(idOf(all), u"org.sandbox.App"_s);
    all.processIdentifier = 8;
    EXPECT_EQ(idOf(all), u"org.gtk.App"_s);
    EXPECT_EQ(identity.identify(all)->localizedName, u"Aplicativo"_s);
    EXPECT_EQ(identity.identify(all)->installLocation, applications.path(u"org.gtk.App.desktop"_s));
    all.gtkApplicationId = u"org.gtk.NotInstalled"_s;
    EXPECT_EQ(idOf(all), u"org.kde.app"_s);
    all.desktopFile = u"/usr/share/applications/org.kde.app.desktop"_s;
    EXPECT_EQ(idOf(all), u"org.kde.app"_s);

    const std::pair<Window, QString> rows[] = {
        {window("instance", "Klass", 8), u"by-class"_s},
        {window("instance", "KLASS", 8), u"by-instance"_s},
        {window("other", "KLASS", 8), u"klass"_s},
        {window("component", "Other", 8), u"org.last.Component"_s},
        {window("other", "Other", 8), u"by-program"_s},
        {window("other", "Other", 9), u"Other"_s},
        {window("other", "", 9), u"other"_s},
        {window("", "", 9), u"Tool"_s},
        {window("", "", 10), u"none"_s},
        {window("", ""), u"none"_s},
    };
    for (const auto& [shown, id] : rows) {
        EXPECT_EQ(idOf(shown), id);
    }
    EXPECT_FALSE(identity.identify(window("", "Other"))->localizedName);
}

TEST_F(ApplicationIdentityTest, OwnWindowsAreOursWhateverTheySay) {
    applications.writeEntry(u"other"_s);
    writeFlatpak(ownProcess, "[Application]\nname=org.sandbox.App\n");
    EXPECT_EQ(idOf(window("other", "Other", ownProcess)), u"com.brindlework.orvanta"_s);
    applications.writeEntry(u"com.brindlework.orvanta"_s, "Name=Orvanta\n");
    EXPECT_EQ(identity.identify(window("", "", ownProcess))->localizedName, u"Orvanta"_s);
}

TEST_F(ApplicationIdentityTest, BrokenSandboxMetadataIsPassedOver) {
    const QByteArray sound = "[Application]\nname=org.not.Exported\n";
    const QByteArray broken[] = {"",
                                 "[Application]\nname=\n",
                                 "[Instance]\nname=org.sandbox.App\n",
                                 "[Application]\nname=\xff\xfe\n",
                                 "[Application]\nname=org." + QByteArray(300, 'x') + "\n",
                                 QByteArray(1 << 20, '#') + "\n" + sound};
    for (const auto& content : broken) {
        writeFlatpak(1, content);
        EXPECT_EQ(idOf(window("", "Klass", 1)), u"Klass"_s) << content.constData();
    }
    writeFlatpak(2, sound);
    EXPECT_EQ(idOf(window("", "Klass", 2)), u"org.not.Exported"_s);
    // A link would lead out of the sandbox.
    processes.link(processes.path(u"2/root/.flatpak-info"_s), u"3/root/.flatpak-info"_s);
    EXPECT_EQ(idOf(window("", "Klass", 3)), u"Klass"_s);
}

} // namespace
