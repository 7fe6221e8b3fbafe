#pragma once

#include <CLI/CLI.hpp>

#include "apps/qzanno/ExportCommand.h"
#include "apps/qzanno/RenderCommand.h"
#include "apps/qzanno/StreamCommand.h"

namespace qz::tool {

/// Options shared by several commands.
void addFontFolders(CLI::App& command, std::vector<std::string>& folders);
void addPaletteOption(CLI::App& command, std::string& path);
void addScreenOption(CLI::App& command, const std::string& description, PixelSize& screen);
void addDirectionOption(CLI::App& command, NSWritingDirection& direction);
void addLooksOption(CLI::App& command, Looks& looks);
/// Adds the options for layout and drawing.
void addDrawingOptions(CLI::App& command, DrawingOptions& options);

/// The arguments of `qzanno render`.
struct RenderArguments {
    RenderOptions options;
    std::optional<Shard> shard;
    /// Whether the share comes from the environment, not from the user.
    bool isShardOfEnvironment = false;
    /// The number of shares to list commands for; 0 if not requested.
    uint32_t listedShares = 0;
};

/// The arguments are complete once the command line is parsed, including a share from the environment.
void describeRender(CLI::App& command, RenderArguments& arguments);

void describeExport(CLI::App& command, ExportOptions& options);

void describeStream(CLI::App& command, StreamOptions& options);

}  // namespace qz::tool
