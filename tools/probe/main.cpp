// kvn-probe: the engine on the command line, for conformance runs, measuring and bug reports.
// A failure is one line on standard error and exit status 1.
#include <QGuiApplication>
#include <cstdio>
#include <exception>

#include "basic/error.h"
#include "commands.h"
#include "engine/engine.h"

namespace {

constexpr const char* usage = R"(usage: kvn-probe COMMAND
  ops                                     every operation with its arguments, as JSON
  info FILE                               type, pages, depth, resolution, metadata, as JSON
  decode FILE DIR                         each page's exact pixels as DIR/0.png, DIR/1.png, ...
  convert IN OUT [SETTING=VALUE ...]      saves by OUT's extension
  run IN OUT OPERATION [ARGUMENT ...]     one operation, or several separated by +
  time IN OPERATION [ARGUMENT ...]        how long it takes, as one JSON object
Settings: JpegQuality JpegSmoothing JpegProgressive TiffCompression BmpRle WmfPlaceable JPEGMarkers
Arguments: colours #rrggbbaa, points x,y, matrices 1,2,3;4,5,6, images by file name, nothing)";

bool dispatch(const QStringList& words) {
    using namespace kvn;
    engine::Engine engine;
    const QString command = words.value(0);
    const qsizetype count = words.size();
    if (command == "ops" && count == 1)
        probe::listOperations();
    else if (command == "info" && count == 2)
        probe::info(words[1]);
    else if (command == "decode" && count == 3)
        probe::decode(words[1], words[2]);
    else if (command == "convert" && count >= 3)
        probe::convert(words[1], words[2], words.mid(3));
    else if (command == "run" && count >= 4)
        probe::run(engine, words[1], words[2], words.mid(3));
    else if (command == "time" && count >= 3)
        probe::time(words[1], words.mid(2));
    else
        return false;
    return true;
}

} // namespace

int main(int argc, char** argv) {
    // Text in metafiles needs the font system, but never a display.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    // Standard error is for the one line of a failure; the toolkit has nothing to say there.
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    const QGuiApplication application(argc, argv);
    try {
        if (dispatch(QGuiApplication::arguments().mid(1))) return 0;
        std::fprintf(stderr, "%s\n", usage);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "kvn-probe: %s\n", error.what());
    }
    return 1;
}
