// Does the same work with QzAnno and with other libraries, alternating in one run, and reports ratios.

#include <QGuiApplication>
#include <cstdio>
#include <cstring>
#include <exception>
#include <fstream>
#include <map>

#include "QzAnno/platform/foundation/NSLog.h"
#include "QzAnno/platform/graphics/PNG.h"
#include "bench/peers/Case.h"
#include "bench/peers/FirstFrame.h"
#include "bench/peers/Report.h"
#include "bench/peers/SampleTitles.h"

namespace qz::peers {

std::unique_ptr<TitlePeer> titlePeer(size_t index, int width, int height) {
    constexpr decltype(&ownTitles) makers[] = {ownTitles, libassTitles, pangoTitles, qtTitles};
    static_assert(std::size(makers) == std::size(kTitlePeers));
    return makers[index](width, height);
}

void storeARGB(const uint32_t* pixels, Frame& frame) {
    for (size_t i = 0; i < frame.bytes.size() / 4; ++i) {
        const uint32_t pixel = pixels[i];
        const uint32_t rgba = (pixel & 0xff00ff00u) | (pixel >> 16 & 0xff) | (pixel & 0xff) << 16;
        std::memcpy(frame.bytes.data() + 4 * i, &rgba, sizeof rgba);
    }
}

namespace {

constexpr const char* kUsage =
    "usage: qzanno_peers [--json FILE] [--chart FILE] [--pictures FOLDER] [--only titles|first|large|filter|model]\n";

bool write(const std::string& path, std::string_view text) {
    std::ofstream file(path, std::ios::binary);
    file << text;
    if (file.flush()) return true;
    std::fprintf(stderr, "qzanno_peers: %s cannot be written\n", path.c_str());
    return false;
}

bool writePictures(const std::string& folder) {
    for (size_t i = 0; i < std::size(kTitlePeers); ++i) {
        Frame frame(kWidth, kHeight);
        titlePeer(i, kWidth, kHeight)->draw(twoLineTitle(), frame);
        const auto bitmap = NSBitmapImageRep::initWithBitmapDataPlanes(frame.bytes.data(),
                                                                       {.pixelsWide = kWidth, .pixelsHigh = kHeight});
        const auto png = pngFromBitmap(*bitmap);
        const std::string name = folder + "/" + kTitlePeers[i] + ".png";
        if (!write(name, {reinterpret_cast<const char*>(png->bytes().data()), png->bytes().size()})) return false;
    }
    return true;
}

int run(std::map<std::string, std::string>& options) {
    if (options.contains("--first-frame")) {
        drawFirstFrame(std::stoul(options["--first-frame"]));
        return 0;
    }
    const std::map<std::string, void (*)(std::vector<Ratio>&)> cases = {{"titles", titleCases},
                                                                        {"first", firstFrameCase},
                                                                        {"large", largeFrameCase},
                                                                        {"filter", filterCases},
                                                                        {"model", modelCases}};
    if (options.contains("--pictures") && !writePictures(options["--pictures"])) return 1;
    std::vector<Ratio> ratios;
    for (const char* name : {"titles", "first", "large", "filter", "model"}) {
        if (!options.contains("--only") || options["--only"] == name) cases.at(name)(ratios);
    }
    printTable(ratios);
    if (options.contains("--json") && !write(options["--json"], jsonOf(ratios))) return 1;
    if (options.contains("--chart") && !write(options["--chart"], chartOf(ratios))) return 1;
    return 0;
}

}  // namespace
}  // namespace qz::peers

int main(int argc, char** argv) {
    std::map<std::string, std::string> options;
    for (int i = 1; i < argc; i += 2) {
        const std::string name = argv[i];
        if (i + 1 == argc || (name != "--json" && name != "--chart" && name != "--pictures" && name != "--only" &&
                              name != "--first-frame")) {
            std::fputs(qz::peers::kUsage, stderr);
            return 2;
        }
        options[name] = argv[i + 1];
    }
    qz::setStandardErrorHook([](std::string_view) {});
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    // Fonts and raster painting need an application, but no screen.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    int qtArgumentCount = 1;
    QGuiApplication application(qtArgumentCount, argv);
    try {
        return qz::peers::run(options);
    } catch (const std::exception& fault) {
        std::fprintf(stderr, "qzanno_peers: %s\n", fault.what());
        return 1;
    }
}
