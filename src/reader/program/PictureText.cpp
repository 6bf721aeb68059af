#include "reader/program/PictureText.h"

#include "linux/loop/FileDescriptor.h"
#include "reader/program/DocumentFile.h"

#include <sys/mman.h>
#include <turbojpeg.h>
#include <unicode/uloc.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace dorix::reader {

namespace {

namespace fs = std::filesystem;

constexpr int longestSide = 4096;  // pixels
constexpr std::size_t mostLanguages = 3;
// Letters of the usual size are told apart better so: of the sizes from one to two this one misses least.
constexpr tjscalingfactor enlarged{3, 2};

struct FreeDecoder {
    void operator()(void* decoder) const { tjDestroy(decoder); }
};

/// Where the recogniser has what it knows of languages, a file each.
fs::path languageFolder() {
    for (const auto* folder :
         {"/usr/share/tesseract-ocr/5/tessdata", "/usr/share/tesseract-ocr/4.00/tessdata",
          "/usr/share/tessdata", "/usr/local/share/tessdata"}) {
        if (fs::is_directory(folder)) return folder;
    }
    throw NotNow("tesseract knows no languages");
}

/// As the recogniser calls it; "spa" for "es-ES".
std::string nameOfLanguage(const std::string& code) {
    const std::string name = uloc_getISO3Language(code.c_str());
    return name == "zho" ? "chi_sim" : name;
}

/// Joined as the recogniser takes them; those that are not installed are left out.
std::string languagesOf(const PictureOrder& order, const fs::path& folder) {
    std::vector<std::string> names;
    const auto add = [&](const std::string& name) {
        const bool isNew = std::ranges::find(names, name) == names.end() && names.size() < mostLanguages;
        if (isNew && !name.empty() && fs::exists(folder / (name + ".traineddata"))) names.push_back(name);
    };
    for (const auto& language : order.languages) add(nameOfLanguage(language));
    if (names.empty()) add("eng");
    if (names.empty()) throw NotNow("tesseract knows none of the user's languages");
    std::string joined;
    for (const auto& name : names) joined += (joined.empty() ? "" : "+") + name;
    return joined;
}

/// Red counts for more than it does to the eye: else the waves that spell checkers draw under words would
/// join their letters.
std::uint8_t shade(const unsigned char* pixel) {
    constexpr unsigned red = 55;
    constexpr unsigned green = 35;
    constexpr unsigned blue = 10;
    return static_cast<std::uint8_t>((red * pixel[0] + green * pixel[1] + blue * pixel[2]) /
                                     (red + green + blue));
}

/// The picture as a PGM file, larger than it was. Throws for what is no such picture.
std::string greyPage(const std::string& jpeg) {
    const std::unique_ptr<void, FreeDecoder> decoder(tjInitDecompress());
    const auto* bytes = reinterpret_cast<const unsigned char*>(jpeg.data());
    int width = 0;
    int height = 0;
    int subsampling = 0;
    int colours = 0;
    const bool isPicture = decoder && tjDecompressHeader3(decoder.get(), bytes, jpeg.size(), &width, &height,
                                                          &subsampling, &colours) == 0;
    if (!isPicture || std::max(width, height) > longestSide) throw std::runtime_error("no picture");
    width = TJSCALED(width, enlarged);
    height = TJSCALED(height, enlarged);
    const auto pixels = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    std::vector<unsigned char> colour(pixels * 3);
    if (tjDecompress2(decoder.get(), bytes, jpeg.size(), colour.data(), width, 0, height, TJPF_RGB,
                      TJFLAG_LIMITSCANS) != 0)
        throw std::runtime_error("no picture");
    std::string page = "P5\n" + std::to_string(width) + " " + std::to_string(height) + "\n255\n";
    page.reserve(page.size() + pixels);
    for (std::size_t i = 0; i < pixels; ++i) page += static_cast<char>(shade(&colour[3 * i]));
    return page;
}

Program recogniser(const std::string& languages, const fs::path& folder) {
    return {.name = "tesseract",
            .arguments = {"stdin", "stdout", "--tessdata-dir", folder.string(), "-l", languages, "-c",
                          "page_separator="},
            .data = {folder},
            // It may not start threads.
            .environment = {"OMP_THREAD_LIMIT=1"},
            .processorSeconds = picturePatience.count()};
}

}  // namespace

void recognise(const PictureOrder& order, int output, Complaints complaints) {
    readInto(output, [&] {
        const auto folder = languageFolder();
        const auto program = recogniser(languagesOf(order, folder), folder);
        // Where the page is put once the picture has been read, which happens inside the jail.
        const FileDescriptor page(::memfd_create("page", MFD_CLOEXEC));
        keepOnly(page.get());
        become(program, complaints, [&] {
            writeAll(STDIN_FILENO, greyPage(order.picture));
            ::lseek(STDIN_FILENO, 0, SEEK_SET);
        });
    });
}

}  // namespace dorix::reader
