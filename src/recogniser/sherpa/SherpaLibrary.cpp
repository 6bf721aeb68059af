#include "recogniser/sherpa/SherpaLibrary.h"

#include "base/Json.h"
#include "recogniser/files/IntactFiles.h"

#include <dlfcn.h>

#include <fstream>
#include <map>
#include <string_view>
#include <system_error>

namespace dorix::recogniser {

namespace fs = std::filesystem;

namespace {

constexpr auto libraryName = "libsherpa-onnx-c-api.so";
constexpr auto runtimeName = "libonnxruntime.so";
constexpr auto recordName = "engine.json";  // what an installation wrote down of the files
// The same in all of the publisher's packages of this version for Linux on x86-64; the library itself is not.
constexpr auto runtimeSum = "4b3607aebd1784b26b6f9b20e4bd974c7ab8287043e4d095cb7d2cb40b5e566e";

/// The publisher's archives have a folder of their own for them.
fs::path folderOfLibraries(const fs::path& folder) {
    for (const auto& candidate : {folder, folder / "lib"}) {
        std::error_code error;
        if (fs::is_regular_file(candidate / libraryName, error)) return candidate;
    }
    throw MessageError("sherpa-onnx is not installed in " + folder.string());
}

/// A folder that somebody put there by hand has no record.
void demandWhatWasInstalled(const fs::path& folder, const fs::path& library) {
    std::error_code error;
    if (!fs::exists(folder / recordName, error) && !error) return;
    std::ifstream stream(folder / recordName);
    const auto record = Json::parse(stream, nullptr, false);
    std::map<std::string, std::string> sums;
    try {
        if (record.at("version") != sherpa::version)
            throw MessageError("sherpa-onnx: another version is installed");
        record.at("sha256").get_to(sums);
    } catch (const Json::exception&) {
        throw MessageError(std::string("sherpa-onnx: ") + recordName + " cannot be read");
    }
    if (!sums.contains(library.lexically_relative(folder)))
        throw MessageError(std::string("sherpa-onnx: ") + recordName + " does not speak of the library");
    demandIntact(folder, sums);
}

template <typename Function>
void find(Function*& function, void* library, const char* name) {
    function = reinterpret_cast<Function*>(::dlsym(library, (std::string("SherpaOnnx") + name).c_str()));
    if (function == nullptr) throw MessageError(std::string("sherpa-onnx has no ") + name);
}

void findOnline(sherpa::Functions& f, void* library) {
    find(f.CreateOnlineRecognizer, library, "CreateOnlineRecognizer");
    find(f.DestroyOnlineRecognizer, library, "DestroyOnlineRecognizer");
    find(f.CreateOnlineStream, library, "CreateOnlineStream");
    find(f.DestroyOnlineStream, library, "DestroyOnlineStream");
    find(f.OnlineStreamSetOption, library, "OnlineStreamSetOption");
    find(f.OnlineStreamAcceptWaveform, library, "OnlineStreamAcceptWaveform");
    find(f.IsOnlineStreamReady, library, "IsOnlineStreamReady");
    find(f.DecodeOnlineStream, library, "DecodeOnlineStream");
    find(f.GetOnlineStreamResult, library, "GetOnlineStreamResult");
    find(f.DestroyOnlineRecognizerResult, library, "DestroyOnlineRecognizerResult");
    find(f.OnlineStreamIsEndpoint, library, "OnlineStreamIsEndpoint");
    find(f.OnlineStreamReset, library, "OnlineStreamReset");
    find(f.OnlineStreamInputFinished, library, "OnlineStreamInputFinished");
}

void findOffline(sherpa::Functions& f, void* library) {
    find(f.CreateOfflineRecognizer, library, "CreateOfflineRecognizer");
    find(f.DestroyOfflineRecognizer, library, "DestroyOfflineRecognizer");
    find(f.CreateOfflineStream, library, "CreateOfflineStream");
    find(f.DestroyOfflineStream, library, "DestroyOfflineStream");
    find(f.AcceptWaveformOffline, library, "AcceptWaveformOffline");
    find(f.DecodeOfflineStream, library, "DecodeOfflineStream");
    find(f.GetOfflineStreamResult, library, "GetOfflineStreamResult");
    find(f.DestroyOfflineRecognizerResult, library, "DestroyOfflineRecognizerResult");
}

}  // namespace

SherpaLibrary::SherpaLibrary(const fs::path& folder) {
    const auto libraries = folderOfLibraries(folder);
    demandWhatWasInstalled(folder, libraries / libraryName);
    demandIntact(libraries, {{runtimeName, runtimeSum}});
    void* library = ::dlopen((libraries / libraryName).c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        throw MessageError(std::string("sherpa-onnx: ") +
                           ::dlerror());  // NOLINT(concurrency-mt-unsafe): one thread
    }
    find(functions_.GetVersionStr, library, "GetVersionStr");
    const char* found = call(functions_.GetVersionStr);
    if (found == nullptr || std::string_view(found) != sherpa::version) {
        throw MessageError(std::string("sherpa-onnx: another version than ") + sherpa::version);
    }
    findOnline(functions_, library);
    findOffline(functions_, library);
}

}  // namespace dorix::recogniser
