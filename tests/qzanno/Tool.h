#pragma once

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <gtest/gtest.h>
#include <sys/wait.h>

#include "QzAnno/platform/foundation/Files.h"
#include "QzAnno/platform/graphics/PNG.h"
#include "tests/support/TemporaryFolder.h"

namespace qz::test {

struct ToolResult {
    int exitCode;
    std::string out;
    std::string err;
};

/// Runs the built program in a temporary folder.
class ToolTest : public testing::Test {
protected:
    ToolResult run(const std::string& arguments) const { return shell("'" QZANNO_TOOL "' " + arguments); }

    /// Runs a shell's command line in the folder; the program is "$QZANNO" in it.
    ToolResult shell(const std::string& line) const {
        const std::string errors = path("stderr.txt");
        const std::string command = "cd '" + folder.path().string() + "' && export QZANNO='" QZANNO_TOOL "' && { " +
                                    line + "; } 2>'" + errors + "'";
        ToolResult result;
        FILE* pipe = popen(command.c_str(), "r");
        char buffer[65536];
        while (const size_t count = std::fread(buffer, 1, sizeof buffer, pipe)) result.out.append(buffer, count);
        const int status = pclose(pipe);
        result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        result.err = contentOf("stderr.txt");
        return result;
    }

    std::string path(const std::string& name) const { return folder.file(name); }
    bool exists(const std::string& name) const { return std::filesystem::exists(path(name)); }

    void write(const std::string& name, const std::string& content) const {
        std::ofstream(path(name), std::ios::binary) << content;
    }

    std::string contentOf(const std::string& name) const {
        std::ifstream file(path(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    Ref<NSBitmapImageRep> picture(const std::string& name) const {
        std::string error;
        const Ref<NSData> file = readFile(path(name), &error);
        Ref<NSBitmapImageRep> bitmap = file ? bitmapFromPNG(*file, &error) : nullptr;
        EXPECT_TRUE(bitmap) << error;
        return bitmap;
    }

    TemporaryFolder folder;
};

/// A palette file of a global style with these property-list elements as its entries.
inline std::string paletteFile(const std::string& globals, const std::string& others = "") {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?><plist "
           "version=\"1.0\"><dict><key>Version</key><integer>0</integer>"
           "<key>Palette</key><array><dict>" +
           globals + "</dict>" + others + "</array></dict></plist>";
}

inline std::string annotation(const std::string& name, const std::string& entries) {
    return "<dict><key>__Annotation Name</key><string>" + name + "</string>" + entries + "</dict>";
}

inline const std::string kWhiteText =
    "<key>NSColor</key><dict><key>Object Name</key><string>NSColor RGBCalibrated</string><key>Red</key><real>1</real>"
    "<key>Green</key><real>1</real><key>Blue</key><real>1</real><key>Alpha</key><real>1</real></dict>";

}  // namespace qz::test
