#pragma once

#include <CLI/CLI.hpp>

#include "apps/qzanno/ExportCommand.h"
#include "apps/qzanno/RenderCommand.h"
#include "apps/qzanno/StreamCommand.h"

namespace qz::tool {

/// Options of the command line that several commands have.
void addFontFolders(CLI::App& command, std::vector<std::string>& folders);
void addPaletteOption(CLI::App& command, std::string& path);
void addScreenOption(CLI::App& command, const std::string& description, PixelSize& screen);
void addDirectionOption(CLI::App& command, NSWritingDirection& direction);
void addLooksOption(CLI::App& command, Looks& looks);
/// Those that say how titles are laid out and drawn.
void addDrawingOptions(CLI::App& command, DrawingOptions& options);

/// What `qzanno render` may be told besides what to render.
struct RenderArguments {
    RenderOptions options;
    std::optional<Shard> shard;
    /// Whether the share is not the user's word but the environment's.
    bool isShardOfEnvironment = false;
    /// Of how many shares the commands are asked for; 0 when they are not.
    uint32_t listedShares = 0;
};

/// The arguments are complete once the command line is parsed, the share of the environment's included.
void describeRender(CLI::App& command, RenderArguments& arguments);

void describeExport(CLI::App& command, ExportOptions& options);

void describeStream(CLI::App& command, StreamOptions& options);

}  // namespace qz::tool
