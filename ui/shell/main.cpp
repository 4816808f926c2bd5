// The desktop program: settings, command table, theme and main window; then the file named
// on the command line, or the most recent one.
#include <QApplication>
#include <QElapsedTimer>
#include <QTimer>
#include <cstdio>

#include "pdf/analysis/ivSessionTexts.h"
#include "ui/shell/ivCommandLine.h"
#include "ui/shell/ivCommands.h"
#include "ui/shell/ivIcons.h"
#include "ui/shell/ivSettings.h"
#include "ui/shell/ivTheme.h"
#include "ui/shell/ivWndMain.h"

#ifdef Q_OS_WIN
#include <windows.h>
#endif

namespace {

std::vector<std::string> Arguments() {
#ifdef Q_OS_WIN
    std::vector<std::string> tokens =
        SplitCommandLine(QString::fromWCharArray(GetCommandLineW()).toStdString());
#else
    std::vector<std::string> tokens;
    for (const QString& a : QCoreApplication::arguments()) tokens.push_back(a.toStdString());
#endif
    if (!tokens.empty()) tokens.erase(tokens.begin());  // the program's own path
    return tokens;
}

// "--grab=FILE.png": once the window has been shown with its document, saves a picture of it
// and quits; with "--timing" the time from start to that point is printed. For looking at
// the program and timing it without a person at the screen; the command-line scan ignores
// both, being options.
struct DeveloperOptions {
    QString grab;
    bool timing = false;
};

DeveloperOptions ReadDeveloperOptions(const std::vector<std::string>& tokens) {
    DeveloperOptions o;
    for (const std::string& t : tokens) {
        if (t.rfind("--grab=", 0) == 0) o.grab = QString::fromStdString(t.substr(7));
        if (t == "--timing") o.timing = true;
    }
    return o;
}

void GrabWhenShown(ivWndMain& window, const DeveloperOptions& o, const QElapsedTimer& clock) {
    if (o.grab.isEmpty() && !o.timing) return;
    QTimer::singleShot(0, &window, [&window, o, &clock] {
        window.repaint();
        if (o.timing) std::printf("shown with its document after %.3f s\n", clock.elapsed() / 1000.0);
        if (!o.grab.isEmpty()) window.grab().save(o.grab);
        QApplication::quit();
    });
}

}  // namespace

int main(int argc, char** argv) {
    QElapsedTimer clock;
    clock.start();
    QApplication app(argc, argv);
    QApplication::setApplicationName("Vantrel");
    QApplication::setOrganizationName("Morvane Software KFT");
    QApplication::setWindowIcon(ivAppIcon());

    ivSettings settings;
    ivSettings::SetInstance(&settings);
    ivCommands commands;
    commands.Load(":/commands.txt");  // without it the program has no menus and no keys
    ivCommands::SetInstance(&commands);

    const std::vector<std::string> tokens = Arguments();
#ifdef Q_OS_WIN
    const ivCommandLine commandLine = ScanCommandLine(tokens, true);
#else
    const ivCommandLine commandLine = ScanCommandLine(tokens, false);
#endif
    if (ivTheme::Current().Load(settings.Theme())) ivTheme::Current().Apply(app);

    ivWndMain window(settings, commands);
    window.show();
    if (!commandLine.path.empty()) {
        window.OpenDocument(QString::fromStdString(commandLine.path), kAddToRecent);
    } else if (settings.LoadLast() && !window.Session().Recent().Entries().empty()) {
        const std::string last = window.Session().Recent().Entries().front().path;
        window.OpenDocument(QString::fromStdString(last), kAddToRecent);
    }
    GrabWhenShown(window, ReadDeveloperOptions(tokens), clock);
    return app.exec();
}
