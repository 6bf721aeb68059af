#include "base/Error.h"
#include "base/Json.h"
#include "fakes/FakePlatform.h"
#include "fakes/memory/TestMemory.h"
#include "localdata/HistoryStore.h"
#include "localdata/Language.h"
#include "memory/embedding/PreferredEmbedder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <functional>
#include <future>
#include <iterator>
#include <new>
#include <set>
#include <thread>

namespace dorix {
namespace {

namespace fs = std::filesystem;
using ::testing::AnyOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Field;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::UnorderedElementsAre;

constexpr double longAgo = 1e9;  // seconds

std::string contentsOf(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

/// Reads all but PDFs, as they are.
class PlainReader final : public DocumentReader {
 public:
    bool reads(std::string_view extension) const override { return extension != "pdf"; }
    Task<std::optional<std::string>> text(fs::path file, std::size_t limit) override {
        asked.push_back(file.filename().string());
        if (hangs) co_await forever;
        if (fails) throw MessageError("dorix-reader: no se pudo iniciar");
        if (asked.size() > endures) throw std::bad_alloc();
        if (silent.contains(file.parent_path().filename())) throw DocumentLate("dorix-reader: no responde");
        const auto text = contentsOf(file);
        if (text.starts_with("no text")) co_return std::nullopt;
        co_return text.substr(0, limit);
    }

    std::vector<std::string> asked;
    bool hangs = false;
    bool fails = false;
    std::size_t endures = 100;  // documents, before the memory is used up
    std::set<fs::path> silent;  // folders whose files are not given
    Completion<void> forever;
};

/// The number of each vowel is a text's meaning.
class VowelEmbedder final : public Embedder {
 public:
    Task<bool> prepare() override { co_return isThere; }
    Task<std::optional<std::vector<float>>> embed(std::string text, Pace) override {
        if (hangs) {
            ++waiting;
            co_await forever;
        }
        if (text.contains(goesAt)) isThere = false;
        if (!isThere || knowsNothing) co_return std::nullopt;
        std::vector<float> vector;
        for (const char vowel : std::string_view("aeiou"))
            vector.push_back(static_cast<float>(std::ranges::count(text, vowel)));
        float sum = 0;
        for (const auto number : vector) sum += number * number;
        for (auto& number : vector) number /= std::sqrt(sum);
        texts.push_back(std::move(text));
        co_return vector;
    }
    std::string identity() const override { return isThere ? name : ""; }

    std::string name = "vowels";
    std::vector<std::string> texts;
    int waiting = 0;
    std::string goesAt = "none of the texts";
    bool isThere = true;
    bool knowsNothing = false;  // of any text
    bool hangs = false;
    Completion<void> forever;
};

/// The real folders, of which one may hang until it is let go.
class TestFileTree final : public FileTree {
 public:
    double list(const std::string& folder, const Visitor& visit) override {
        const auto before = changed(folder);
        ++listed;
        if (folder.ends_with("/hangs")) released.get_future().wait();
        std::error_code error;
        for (const auto& entry : fs::directory_iterator(folder, error)) {
            const bool isFolder = entry.is_directory() && !entry.is_symlink();
            const bool isFile = entry.is_regular_file() && !entry.is_symlink();
            visit(entry.path().filename().string(), isFolder ? Kind::folder
                                                    : isFile ? Kind::file
                                                             : Kind::other);
        }
        return before;
    }
    /// Long before the time of the tests.
    double changed(const std::string& folder) override { return modifiedOf(folder) - longAgo; }
    std::vector<std::string> networkMounts() override { return mounts; }

    std::atomic<int> listed = 0;
    std::promise<void> released;
    std::vector<std::string> mounts;
};

class Workspaces final : public MessageSearch {
 public:
    bool isConnected() const override { return connected; }
    std::vector<std::string> workspaces() const override { return {}; }
    Task<std::vector<MemoryHit>> search(std::string) override {
        if (hangs) co_await forever;
        co_return hits;
    }

    bool connected = true;
    bool hangs = false;
    std::vector<MemoryHit> hits;
    Completion<void> forever;
};

class LowBattery final : public BackgroundWork {
 public:
    void makeThreadIdle() override {
        ++idleThreads;
        if (std::this_thread::get_id() == main) isMainIdle = true;
    }
    std::optional<double> batteryLeft() override {
        ++looks;
        return left < 0 ? std::nullopt : std::optional<double>(left);
    }

    std::atomic<double> left = -1;  // below 0: on mains
    std::atomic<int> looks = 0;
    std::atomic<int> idleThreads = 0;
    std::atomic<bool> isMainIdle = false;
    const std::thread::id main = std::this_thread::get_id();
};

class MemoryControllerTest : public testing::Test, protected FakePlatform {
 protected:
    MemoryControllerTest() {
        installLanguage(defaults, {});
        other.name = "other";
        other.isThere = false;
        fs::create_directories(home / "Documents");
    }
    ~MemoryControllerTest() override { uninstallLanguage(); }

    void write(const fs::path& name, const std::string& text) {
        fs::create_directories((home / name).parent_path());
        std::ofstream(home / name, std::ios::binary) << text;
    }
    /// Runs what is posted until `isSo`, for which other threads work.
    void await(const std::function<bool()>& isSo) {
        const auto until = std::chrono::steady_clock::now() + std::chrono::seconds(30);
        while (!isSo() && std::chrono::steady_clock::now() < until) {
            executor.runPosted();
            std::this_thread::yield();
        }
        ASSERT_TRUE(isSo());
    }
    /// Gives other threads so many seconds, while the executor's time stands still.
    void runFor(double seconds) {
        const auto until = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
        while (std::chrono::steady_clock::now() < until) {
            executor.runPosted();
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }
    void index() {
        reader.asked.clear();
        memory.indexNow();
        await([this] { return !memory.indexing.get(); });
        do_(memory.refreshCounts());
    }
    template <typename T>
    TaskHandle<T> finish(Task<T> task) {
        auto handle = tasks.spawn(std::move(task));
        await([&] { return handle.isDone(); });
        return handle;
    }
    void do_(Task<void> task) { finish(std::move(task)); }
    template <typename T>
    T valueOf(Task<T> task) {
        return valueOf(finish(std::move(task)));
    }
    template <typename T>
    T valueOf(TaskHandle<T> handle) {
        std::optional<T> value;
        const auto take = [](TaskHandle<T> from, std::optional<T>& to) -> Task<void> { to = co_await from; };
        tasks.spawn(take(std::move(handle), value));
        executor.runPosted();
        return std::move(*value);
    }
    std::vector<std::string> titles(const std::string& query, std::size_t limit = 8) {
        std::vector<std::string> found;
        for (auto& hit : valueOf(memory.search(query, limit))) found.push_back(hit.title);
        return found;
    }

    const fs::path home = folder.path() / "home";
    const std::string passage = "La propuesta para Marta: el presupuesto de la reforma son 4.200 euros.";
    PlainReader reader;
    VowelEmbedder embedder;
    VowelEmbedder other;  // in its place, once it is there
    PreferredEmbedder embedders{embedder, other};
    TestFileTree tree;
    Workspaces workspaces;
    LowBattery power;
    HistoryStore history{folder.path() / "dorix.sqlite"};
    TestMemory made{executor,
                    defaults,
                    history,
                    folder.path() / "memory.sqlite",
                    {.embedder = &embedders,
                     .reader = &reader,
                     .files = &tree,
                     .background = &power,
                     .messages = &workspaces,
                     .home = home,
                     .documentFolders = {home / "Documents"}}};
    MemoryStore& store = made.store;
    MemoryController& memory = made.memory;
    TaskScope tasks{executor};
};

TEST_F(MemoryControllerTest, ARunTakesInWhatIsNewAndRemovesWhatIsGone) {
    write("Documents/carta.txt", passage);
    write("Documents/nota.md", "demasiado corta");
    write("Documents/vacía.odt", "no text");
    write("Documents/contraseñas.txt", passage);
    write("Documents/foto.png", passage);
    write("Documents/leído luego.pdf", passage);
    write("Documents/.oculta/x.txt", passage);
    write("Documents/clave.d/bad\xFFname\n.txt",
          "password: hunter2 y luego algo más de texto para que no sea corto.");
    history.add({.id = "A-1",
                 .app = "Correo",
                 .title = "Respuesta",
                 .createdAt = 5,
                 .query = "contesta a Marta que la reunión pasa al jueves",
                 .answer = "La reunión pasa al jueves."},
                HistoryStore::Persist::yes);
    history.add({.id = "A-2", .app = "Correo", .title = "Sin respuesta", .query = passage},
                HistoryStore::Persist::yes);
    history.add({.id = "A-3", .kind = HistoryKind::pregunta, .query = passage, .answer = "La respuesta que"},
                HistoryStore::Persist::no);

    std::vector<std::string> told;
    const auto listening = memory.progress.subscribe([&](const auto& line) { told.push_back(line); });
    index();
    EXPECT_EQ(memory.documents.get(), 4) << "short ones, those without text or with a secret count as well";
    EXPECT_EQ(memory.chunks.get(), 2);
    EXPECT_THAT(told, UnorderedElementsAre("Preparando…", "Leyendo carta.txt…", "Leyendo nota.md…",
                                           "Leyendo vacía.odt…", HasSubstr("name .txt…"),
                                           "4 documentos actualizados"));
    EXPECT_THAT(embedder.texts,
                UnorderedElementsAre(passage,
                                     "Dictado en Correo: contesta a Marta que la reunión pasa al "
                                     "jueves\nLa reunión pasa al jueves."));
    EXPECT_EQ(memory.lastIndexed.get(), executor.date());
    EXPECT_GT(power.idleThreads, 0);
    EXPECT_FALSE(power.isMainIdle);
    const auto hits = valueOf(memory.search("presupuesto", 1));
    ASSERT_EQ(hits.size(), 1);
    EXPECT_EQ(hits[0].text, "carta.txt\n" + passage);

    index();
    EXPECT_THAT(reader.asked, IsEmpty()) << "nothing changed";
    EXPECT_EQ(memory.progress.get(), "Al día");

    defaults.set("appLanguage", "en");
    fs::last_write_time(home / "Documents/carta.txt",
                        fs::file_time_type::clock::now() + std::chrono::hours(1));
    fs::remove(home / "Documents/nota.md");
    reader.fails = true;
    index();
    EXPECT_EQ(memory.progress.get(), "Up to date");
    EXPECT_THAT(titles("presupuesto", 1), ElementsAre("carta.txt")) << "what cannot be read just now stays";
    reader.fails = false;
    index();
    EXPECT_THAT(reader.asked, ElementsAre("carta.txt"));
    EXPECT_EQ(memory.progress.get(), "1 documents updated");
    EXPECT_EQ(memory.documents.get(), 3);

    memory.indexDocuments.set(false);
    EXPECT_EQ(defaults.boolean("memoryDocs"), false);
    index();
    EXPECT_EQ(memory.documents.get(), 0);
    EXPECT_EQ(memory.chunks.get(), 1) << "the history stays";
    history.add({.id = "A-3", .kind = HistoryKind::pregunta, .query = passage, .answer = "La respuesta que"},
                HistoryStore::Persist::yes);
    index();
    EXPECT_EQ(memory.chunks.get(), 2) << "an answer that grows no more, finished or not";
    do_(memory.clearIndex());
    EXPECT_EQ(memory.chunks.get(), 0);
    EXPECT_EQ(memory.progress.get(), "Index deleted");
}

TEST_F(MemoryControllerTest, RunsKeepTheirHoursAndMakeRoom) {
    write("Documents/carta.txt", passage);
    memory.start();
    executor.advanceTo(59);
    EXPECT_FALSE(memory.indexing.get());
    memory.pauseWhile(true);
    executor.advanceTo(60);
    EXPECT_TRUE(memory.indexing.get());
    power.left = 0.1;
    memory.indexNow();  // dropped
    runFor(0.1);
    EXPECT_EQ(power.looks, 0) << "the user dictates";
    memory.pauseWhile(false);
    await([this] { return power.looks == 1; });
    runFor(0.05);
    executor.advanceBy(59);
    EXPECT_THAT(reader.asked, IsEmpty()) << "the battery is nearly empty";
    power.left = -1;
    executor.advanceBy(1);
    await([this] { return !memory.indexing.get(); });
    EXPECT_THAT(reader.asked, ElementsAre("carta.txt"));

    write("Downloads/otra.txt", passage);
    memory.addFolder(home / "Downloads");
    EXPECT_EQ(defaults.value("memoryFolders"), Json({home / "Documents", home / "Downloads"}));
    executor.advanceBy(2);
    EXPECT_TRUE(memory.indexing.get());
    await([this] { return !memory.indexing.get(); });
    EXPECT_THAT(reader.asked, ElementsAre("carta.txt", "otra.txt"));
    memory.removeFolder(home / "Documents");
    executor.advanceBy(1);
    EXPECT_FALSE(memory.indexing.get());
    executor.advanceTo(1800);
    await([this] { return !memory.indexing.get() && memory.documents.get() == 1; });
}

TEST_F(MemoryControllerTest, WhatComesLateIsLeftOutOfASearch) {
    write("Documents/carta.txt", passage);
    write("F/Presupuesto reforma.png", "");
    write("Presupuesto reforma clave.txt", passage);
    index();
    const MemoryHit message{.path = "slack://", .title = "#obra", .text = "el presupuesto", .kind = "slack"};
    workspaces.hits.assign(5, message);
    EXPECT_THAT(
        titles("el presupuesto de la reforma"),
        ElementsAre("Presupuesto reforma.png", "Presupuesto reforma clave.txt", "#obra", "carta.txt"));
    EXPECT_THAT(reader.asked, Not(Contains("Presupuesto reforma clave.txt"))) << "its name tells of a secret";
    EXPECT_THAT(titles("busca en el canal lo del presupuesto"), Contains("#obra").Times(5));
    const auto hits = valueOf(memory.search("presupuesto reforma", 8));
    EXPECT_EQ(hits[0].text, "Archivo encontrado por su nombre en " + (home / "F").string() + ".");

    workspaces.hangs = embedder.hangs = reader.hangs = true;
    write("presupuesto reforma nueva/carta.txt", passage);
    executor.advanceBy(61);  // the names are old by now
    auto late = tasks.spawn(memory.search("el presupuesto de la reforma", 8));
    runFor(0.5);  // for those that are not late
    for (int i = 0; i < 90 && !late.isDone(); ++i) {
        executor.advanceBy(0.1);
        runFor(0.005);
    }
    ASSERT_TRUE(late.isDone()) << "in nine seconds at most";
    const auto found = valueOf(std::move(late));
    EXPECT_THAT(found, Contains(Field(&MemoryHit::title, "carta.txt"))) << "by its words";
    EXPECT_THAT(found, Contains(Field(&MemoryHit::title, "presupuesto reforma nueva")));
    EXPECT_THAT(found, Not(Contains(Field(&MemoryHit::title, "#obra"))));
}

TEST_F(MemoryControllerTest, NamesAreFoundInAHomeOfWhichAFolderHangs) {
    write("Música/Canción Ñandú.TXT", "no text");
    write(".cache/cancion.txt", "");
    write("mount/canción.txt", "");
    write("uno\ndos/bad\xFF canción.txt", "no text");
    fs::create_directory_symlink(home, home / "canción de enlace");
    write("hangs/x.txt", "");
    tree.mounts = {(home / "mount").string()};
    auto search = tasks.spawn(memory.search("cancion", 8));
    await([&] { return tree.listed.load() >= 2; });
    executor.advanceBy(3);
    await([&] { return search.isDone(); });
    tree.released.set_value();
    await([&] { return tree.listed.load() >= 5; });
    // All of it is there once the folder has answered.
    EXPECT_THAT(titles("busca cancion"),
                UnorderedElementsAre("Canción Ñandú.TXT", "bad\xEF\xBF\xBD canción.txt"));
    EXPECT_THAT(titles("cancion nandu tercero"), ElementsAre("Canción Ñandú.TXT")) << "two words of three";

    const int listed = tree.listed;
    fs::rename(home / "Música/Canción Ñandú.TXT", home / "Música/Canción nueva.txt");
    write("Música/de ayer/otra canción.txt", "no text");
    executor.advanceBy(11);
    EXPECT_THAT(titles("cancion"),
                UnorderedElementsAre("Canción nueva.txt", "otra canción.txt", "bad\xEF\xBF\xBD canción.txt"));
    EXPECT_EQ(tree.listed, listed + 2) << "the folder that changed, and the one that came";
}

TEST_F(MemoryControllerTest, AFolderThatHangsKeepsItsDocuments) {
    write("Documents/carta.txt", passage);
    write("Documents/remoto/informe.txt", passage);
    index();
    EXPECT_EQ(memory.documents.get(), 2);
    LooseThreads threads;
    std::promise<void> answer;
    const auto remote = (home / "Documents/remoto").string();
    auto hanging = tasks.spawn(threads.run(
        remote, [wait = answer.get_future().share()](const LooseThreads::Watch&) { return wait.wait(), 1; },
        20));
    executor.advanceBy(20);
    await([&] { return hanging.isDone(); });
    fs::remove(home / "Documents/carta.txt");
    fs::remove(home / "Documents/remoto/informe.txt");
    tree.mounts = {remote};
    FolderWalks walks(tree, threads);
    SerialExecutor worker;
    Pace pace(executor, worker, power);
    IndexRun run({.store = store,
                  .embedder = embedder,
                  .reader = reader,
                  .walks = walks,
                  .pace = pace,
                  .worker = worker},
                 {.history = {}, .folders = {home / "Documents"}});
    finish(run.done());
    answer.set_value();
    EXPECT_THAT(valueOf(store.docPaths("file")), ElementsAre(remote + "/informe.txt"));
}

TEST_F(MemoryControllerTest, AComputerThatListsFilesAndDoesNotGiveThemIsWaitedForOnce) {
    for (const auto* name : {"Documents/nas/a.txt", "Documents/nas/b.txt", "Documents/aquí/c.txt",
                             "Documents/aquí/d.txt", "Documents/usb/e.txt"})
        write(name, passage);
    tree.mounts = {(home / "Documents/nas").string(), (home / "Documents/usb").string()};
    reader.silent = {"nas", "aquí"};
    index();
    EXPECT_THAT(reader.asked, UnorderedElementsAre(AnyOf("a.txt", "b.txt"), "c.txt", "d.txt", "e.txt"));
    EXPECT_EQ(memory.documents.get(), 1);
    reader.silent = {};
    index();
    EXPECT_EQ(memory.documents.get(), 5);
}

TEST_F(MemoryControllerTest, AFolderThatIsALinkToAnotherComputerIsWaitedForOnce) {
    for (const auto* name : {"server/a.txt", "server/b.txt", "server/disk/c.txt", "server/disk/d.txt"})
        write(name, passage);
    const auto server = fs::canonical(home / "server");
    tree.mounts = {server.string(), (server / "disk").string()};
    fs::create_directory_symlink(server, home / "link");
    memory.addFolder(home / "link");
    reader.silent = {"link", "disk"};
    index();
    EXPECT_THAT(reader.asked, UnorderedElementsAre(AnyOf("a.txt", "b.txt"), AnyOf("c.txt", "d.txt")));
    reader.silent = {};
    index();
    EXPECT_THAT(valueOf(store.docPaths("file")), Contains((home / "link/disk/c.txt").string()));
}

TEST_F(MemoryControllerTest, WhatAModelThatGoesLeavesUndoneIsPutOff) {
    for (const auto* name : {"a.txt", "b.txt", "c.txt"})
        write(fs::path("Documents") / name, passage + " en " + name);
    embedder.goesAt = "euros. en";
    index();
    EXPECT_THAT(reader.asked, SizeIs(1)) << "the others would be read for nothing";
    EXPECT_EQ(memory.progress.get(), "Al día");
    EXPECT_EQ(memory.documents.get(), 0);
    embedder.goesAt = "none of the texts";
    embedder.isThere = true;
    index();
    EXPECT_EQ(memory.progress.get(), "3 documentos actualizados");
}

TEST_F(MemoryControllerTest, ARunThatFailsTellsOfWhatItDidAndOfNothingElse) {
    for (const auto* name : {"a.txt", "b.txt"}) write(fs::path("Documents") / name, passage);
    reader.endures = 0;
    index();
    EXPECT_EQ(memory.progress.get(), "");
    EXPECT_EQ(memory.lastIndexed.get(), std::nullopt);
    reader.endures = 1;
    index();
    EXPECT_EQ(memory.progress.get(), "1 documentos actualizados");
    EXPECT_EQ(memory.lastIndexed.get(), std::nullopt);
    reader.endures = 2;
    index();
    EXPECT_EQ(memory.lastIndexed.get(), executor.date());
}

TEST_F(MemoryControllerTest, WhatIsReadWithoutAModelIsReadAgainOnceThereIsOne) {
    write("Documents/a.txt", passage);
    index();
    embedder.isThere = false;
    write("Documents/b.txt", passage);
    write("Documents/corta.txt", "demasiado corta");
    index();
    EXPECT_THAT(reader.asked, UnorderedElementsAre("b.txt", "corta.txt"));
    index();
    EXPECT_THAT(reader.asked, IsEmpty()) << "there is no model yet";
    embedder.isThere = true;
    embedder.knowsNothing = true;
    index();
    EXPECT_THAT(reader.asked, ElementsAre("b.txt"));
    embedder.knowsNothing = false;
    index();
    EXPECT_THAT(reader.asked, IsEmpty()) << "the model had its say";
}

TEST_F(MemoryControllerTest, VectorsOfTwoModelsAreNotMixedWhenOneTakesOverInMidRun) {
    write("Documents/a.txt", passage);
    index();
    write("Documents/b.txt", passage);
    write("Documents/c.txt", passage);
    embedder.hangs = true;
    memory.indexNow();
    await([this] { return embedder.waiting == 1; });
    embedder.isThere = false;
    other.isThere = true;
    const std::string byMeaningAlone = "que";
    EXPECT_THAT(titles(byMeaningAlone), IsEmpty()) << "what there is was made by the model before";
    embedder.hangs = false;
    embedder.forever.complete();
    await([this] { return !memory.indexing.get(); });
    EXPECT_THAT(titles(byMeaningAlone), UnorderedElementsAre("b.txt", "c.txt"));
    index();
    EXPECT_THAT(reader.asked, ElementsAre("a.txt"));
    EXPECT_THAT(titles(byMeaningAlone), UnorderedElementsAre("a.txt", "b.txt", "c.txt"));
}

TEST_F(MemoryControllerTest, TheRecapTellsOfActivityAndHistory) {
    do_(store.recordActivity("Editor", std::nullopt, "informe.odt", "/d/informe.odt"));
    executor.advanceBy(300);
    do_(store.recordActivity("Visor", std::nullopt, "uno\n- dos", "/d/uno\n- dos\xFF"));
    executor.advanceBy(300);
    history.add(
        {.id = "1", .app = "Correo", .title = "Respuesta", .createdAt = executor.date(), .answer = "x"},
        HistoryStore::Persist::no);
    const auto recap = valueOf(memory.recap());
    EXPECT_THAT(recap.text, HasSubstr("- Editor: «informe.odt» [/d/informe.odt] · 5 min · último uso "));
    EXPECT_THAT(recap.text, HasSubstr("\nLo que hizo con DORIX:\n- Dictado en Correo ("));
    EXPECT_THAT(recap.text, HasSubstr("- Visor: «uno - dos» [/d/uno - dos\xEF\xBF\xBD] · 5 min"));
    EXPECT_THAT(recap.documents, ElementsAre("/d/informe.odt", "/d/uno\n- dos\xFF"));
    do_(memory.clearActivity());
    EXPECT_THAT(valueOf(memory.recap()).documents, IsEmpty());
}

}  // namespace
}  // namespace dorix
