// What the entry point looks up in the module.
#include <fcntl.h>
#include <fontconfig/fontconfig.h>
#include <unistd.h>

#include <QApplication>
#include <cstdlib>
#include <initializer_list>
#include <string>
#include <vector>

#include "App/Application.h"
#include "CLI/Previews.h"

namespace {

/// Pictures must look alike everywhere, whatever scale, style, theme or fonts the user's desktop
/// and environment ask of Qt.
void isolateQt() {
    std::vector<std::string> names{"XDG_CURRENT_DESKTOP"};
    for (char** variable = environ; *variable; ++variable) {
        const std::string_view text(*variable);
        if (text.starts_with("QT_") || text.starts_with("FONTCONFIG_") || text.starts_with("FC_"))
            names.emplace_back(text.substr(0, text.find('=')));
    }
    for (const std::string& name : names)
        unsetenv(name.c_str());
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    setenv("TMPDIR", "/dev/null", 1);  // without a session Qt would leave a directory there
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    QApplication::setDesktopSettingsAware(false);
}

/// The system's version of the bundled family must not replace it.
constexpr const char* withoutFamily =
    "<fontconfig><selectfont><rejectfont><pattern>"
    "<patelt name=\"family\"><string>Inter</string></patelt>"
    "</pattern></rejectfont></selectfont></fontconfig>";

void setFontRules(FcConfig* config, std::initializer_list<const char*> rules) {
    for (const char* each : rules)
        FcConfigParseAndLoadFromMemory(config, reinterpret_cast<const FcChar8*>(each), FcTrue);
    FcConfigBuildFonts(config);
    FcConfigSetCurrent(config);
    FcConfigDestroy(config);  // fontconfig keeps a reference
}

/// The system's fonts are left, for scripts that the bundled family lacks, without the user's rules
/// and without a cache in the home directory.
void isolateFonts() {
    setFontRules(FcConfigCreate(), {"<fontconfig><dir>/usr/share/fonts</dir><cachedir>/var/cache/"
                                    "fontconfig</cachedir></fontconfig>",
                                    withoutFamily});
}

/// fontconfig complains there.
void silenceStandardError() {
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (nowhere >= 0) dup2(nowhere, STDERR_FILENO);
    if (nowhere >= 0) close(nowhere);
}

}  // namespace

extern "C" Q_DECL_EXPORT void quilletPicture(const char* command, const char* outPath) {
    isolateQt();
    silenceStandardError();
    isolateFonts();
    int count = 1;
    char name[] = "quillet";
    char* arguments[] = {name, nullptr};
    const QApplication application(count, arguments);
    const std::string_view picture(command);
    if (picture == "preview") CLI::preview(outPath);
    if (picture == "panel") CLI::panel(outPath);
    if (picture == "menubar") CLI::menubar(outPath);
}

extern "C" Q_DECL_EXPORT void quilletWatch() {
    setFontRules(FcInitLoadConfig(), {withoutFamily});
    Application::run();
}
