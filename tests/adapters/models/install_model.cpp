// Installs a model from a catalogue, for a test that kills it: install_model CATALOGUE HOME ID
#include "adapters/models/ServedModel.h"
#include "base/async/TaskScope.h"
#include "linux/curl/CurlHttpClient.h"
#include "linux/qt/QtMainLoop.h"
#include "linux/xdg/DurableFolders.h"
#include "speech/models/ModelInstaller.h"

#include <QCoreApplication>
#include <iostream>

namespace dorix {
namespace {

Task<void> install(ModelInstaller& installer, std::string id) {
    int status = 1;
    try {
        co_await installer.install(id, ModelInstaller::Licence::accepted, nullptr);
        status = 0;
    } catch (const Error& error) {
        std::cout << error.localizedDescription() << std::endl;
    }
    QCoreApplication::exit(status);
}

int run(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    QtMainLoop loop;
    const auto catalogue = ModelCatalogue::parse(contents(argv[1])).value();
    CurlHttpClient http;
    CopyingUnpacker unpacker;
    DurableFolders folders;
    const Observable<Mirrors> mirrors;
    ModelInstaller installer({loop, http, unpacker, folders}, catalogue, argv[2], mirrors, 0);
    TaskScope scope(loop);
    loop.post([&] { scope.spawn(install(installer, argv[3])); });
    return QCoreApplication::exec();
}

}  // namespace
}  // namespace dorix

int main(int argc, char** argv) { return dorix::run(argc, argv); }
