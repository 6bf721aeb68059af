#include "context/WindowCapture.h"

#include "base/Log.h"
#include "base/async/Completion.h"
#include "base/text/Text.h"
#include "context/JpegPicture.h"
#include "localdata/Language.h"

#include <algorithm>
#include <cmath>
#include <ranges>
#include <string_view>
#include <utility>

namespace dorix {

namespace {

using Window = ScreenContent::Window;

constexpr double largestSide = 1568;  // pixels
constexpr double compressionFactor = 0.8;
// Palettes and small helpers are no larger, in points.
constexpr double palettesWidth = 120;
constexpr double palettesHeight = 80;

constexpr std::size_t longestText = 100'000;  // characters
// Seconds: longer than the helper gives a picture, as that is to say what was wrong with it.
constexpr double patience = 40;

/// Whose windows tell no process, such as those of another computer, are known by the one that was in front.
bool owns(const RunningApplication& app, const Window& window) {
    if (app.processIdentifier == 0) return app.windowNumber != 0 && app.windowNumber == window.number;
    return app.processIdentifier == window.ownerProcess;
}

bool isPalette(const Window& window) {
    return window.extent.width <= palettesWidth || window.extent.height <= palettesHeight;
}

const Window* frontWindow(const std::vector<Window>& windows, const std::optional<RunningApplication>& app) {
    if (!app) return nullptr;
    const auto isIts = [&](const auto& window) { return owns(*app, window) && !isPalette(window); };
    // The one that the user was in, also where it is kept above others; no small film that floats over it.
    auto found = std::ranges::find_if(
        windows, [&](const auto& window) { return window.number == app->windowNumber && isIts(window); });
    if (found == windows.end())
        found = std::ranges::find_if(windows,
                                     [&](const auto& window) { return window.layer == 0 && isIts(window); });
    return found == windows.end() || !found->isShareable ? nullptr : &*found;
}

/// Never enlarged.
ScreenContent::Pixels pictureSize(const ScreenContent::Extent& extent) {
    // Points are fractions of pixels.
    const double width = std::round(extent.width * extent.pixelsPerPoint);
    const double height = std::round(extent.height * extent.pixelsPerPoint);
    const double factor = std::min(1.0, largestSide / std::max({width, height, 1.0}));
    return {.width = std::max(static_cast<int>(width * factor), 1),
            .height = std::max(static_cast<int>(height * factor), 1)};
}

/// Without the empty ones between paragraphs.
std::string linesOf(std::string_view page) {
    std::string lines;
    for (const auto part : std::views::split(page, '\n')) {
        const auto line = text::trim(std::string_view(part.begin(), part.end()));
        if (!line.empty()) lines.append(lines.empty() ? "" : "\n").append(line);
    }
    return lines;
}

}  // namespace

std::string WindowCapture::CaptureError::localizedDescription() const {
    if (kind_ == Case::nothing) return tr("No se pudo capturar la ventana.");
    return tr("Para ver la pantalla, activa «Grabación de pantalla» para DORIX en Ajustes del Sistema.");
}

Task<std::optional<ScreenImage>> WindowCapture::image(std::optional<RunningApplication> app) {
    const auto contents = co_await parts_.screen.contents();
    if (const auto* window = frontWindow(contents.windows, app))
        co_return co_await parts_.screen.windowImage(window->number, pictureSize(window->extent));
    if (contents.displays.empty()) co_return std::nullopt;
    const auto& display = contents.displays.front();
    co_return co_await parts_.screen.displayImage(display.number, parts_.ownProcess,
                                                  pictureSize(display.extent));
}

Task<ScreenCapture::Shot> WindowCapture::capture(std::optional<RunningApplication> app) {
    if (!parts_.grants.preflightScreenCaptureAccess()) throw CaptureError(CaptureError::Case::permission);
    auto taken = co_await image(std::move(app));
    if (!taken) throw CaptureError(CaptureError::Case::nothing);
    Shot shot;
    shot.jpeg = co_await runOn(parts_.worker,
                               [picture = *std::move(taken)] { return jpegOf(picture, compressionFactor); });
    if (shot.jpeg.empty()) throw CaptureError(CaptureError::Case::nothing);
    co_return shot;
}

/// Nobody is told why there is none: what is asked is answered without.
Task<std::string> WindowCapture::text(Shot shot) {
    PictureOrder order{
        .picture = std::move(shot.jpeg), .languages = parts_.languages(), .limit = longestText};
    if (order.picture.size() > longestPicture) co_return "";
    try {
        const auto answer = co_await reader_.answer(encoded(order), patience);
        if (answer.outcome == ReadAnswer::Outcome::text) co_return linesOf(answer.words);
        if (answer.outcome != ReadAnswer::Outcome::noText)
            logLine("no se pudo leer la ventana: " + answer.words);
    } catch (const Error& error) {
        logLine("no se pudo leer la ventana: " + describedIn(LogLanguage::spanish, error));
    }
    co_return "";
}

}  // namespace dorix
