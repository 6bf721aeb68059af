#include "views/PanelGallery.h"

#include "base/text/Calendar.h"
#include "localdata/Language.h"
#include "views/Tokens.h"

#include <QCoreApplication>
#include <QPainter>
#include <QPainterPath>
#include <QQmlContext>
#include <QQuickItem>
#include <ctime>
#include <map>
#include <optional>

namespace dorix::testing {

namespace {

constexpr int reach = tokens::shadowReach;
constexpr double hour = 3600;

void settle() {
    for (int i = 0; i < 6; ++i) QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
}

const char* const answer =
    "## Lo acordado con Marta\n\nEl contrato de **Velmar** se firma el *jueves 19*, con estos cambios:\n\n"
    "1. El plazo pasa de 30 a **45 días**.\n2. La penalización se calcula con `importe * 0,02` por semana.\n"
    "3. Las entregas parciales se facturan aparte:\n   - primera, en julio\n   - segunda, en septiembre\n\n"
    "> «Con eso firmamos», dijo Marta al final de la llamada.\n\n"
    "```\ntotal = base + iva\npenalizacion = total * 0.02 * semanas\n```\n\n"
    "El borrador está en https://velmar.example/contratos/2025 y lo revisa Ana el lunes.\n";

const char* const answerInEnglish =
    "## What was agreed with Marta\n\nThe **Velmar** contract is signed on *Thursday the 19th*, with these "
    "changes:\n\n1. The term goes from 30 to **45 days**.\n2. The penalty is `amount * 0.02` a week.\n"
    "3. Partial deliveries are invoiced separately:\n   - the first in July\n   - the second in September\n\n"
    "> “With that we sign”, Marta said at the end of the call.\n\n"
    "```\ntotal = base + vat\npenalty = total * 0.02 * weeks\n```\n\n"
    "The draft is at https://velmar.example/contracts/2025, and Ana reads it on Monday.\n";

/// The window as it looks over a plain ground, its translucency kept.
QImage grab(QQuickView& view, bool dark, bool composited) {
    const QColor ground = dark ? QColor(0x3A, 0x44, 0x52) : QColor(0xC9, 0xD6, 0xE4);
    view.setColor(ground);
    settle();
    QImage image = view.grabWindow().convertToFormat(QImage::Format_RGB32);
    if (composited) return image;
    // Cut to its shape where nothing composites, as the display does it.
    QImage cut(image.size(), QImage::Format_RGB32);
    cut.setDevicePixelRatio(image.devicePixelRatio());
    cut.fill(ground);
    QPainter painter(&cut);
    QPainterPath path;
    path.addRoundedRect(QRectF(QPointF(0, 0), view.size()).adjusted(reach, reach, -reach, -reach),
                        tokens::cardRadius, tokens::cardRadius);
    painter.setClipPath(path);
    painter.drawImage(QPoint(0, 0), image);
    return cut;
}

class Panel {
 public:
    explicit Panel(const PanelPicture& picture) : picture_(picture) {
        qputenv("TZ", "UTC");
        tzset();
        refreshTimeZone();
        defaults_.set("appLanguage", picture.language);
        defaults_.set("panelSize", Json::array({picture.size.width(), picture.size.height()}));
        installLanguage(defaults_, {});
        theme_.setDark(picture.dark);
        theme_.setComposited(picture.composited);
        theme_.map().insert({{"fadeIn", 0}, {"fadeBetween", 0}, {"fadeOut", 0}});
        engine_.rootContext()->setContextProperty("theme", &theme_.map());
    }
    ~Panel() { uninstallLanguage(); }
    Panel(const Panel&) = delete;
    Panel& operator=(const Panel&) = delete;

    QImage draw() {
        if (!picture_.isEmpty) fill();
        state_.section.set(picture_.section);
        state_.query.set(picture_.query);
        state_.composerRecording.set(picture_.records);
        SettingsStore settings(defaults_, loginItem_, SystemLanguages{});
        HistoryPanel panel({.executor = executor_,
                            .background = executor_,
                            .state = state_,
                            .history = history_,
                            .database = folder_.path() / "dorix.sqlite",
                            .pasteboard = pasteboard_,
                            .savePanel = savePanel_,
                            .files = files_,
                            .urls = urls_});
        const ViewContext context{.engine = engine_, .theme = theme_};
        PanelWindow window(context, {.executor = executor_,
                                     .defaults = defaults_,
                                     .state = state_,
                                     .settings = settings,
                                     .speech = speech_,
                                     .panel = panel});
        const Rect screen{0, 0, static_cast<double>(picture_.screen.width()),
                          static_cast<double>(picture_.screen.height())};
        window.place({screen.width - 96, 2, 96, 96}, {{.frame = screen, .visibleFrame = screen}});
        state_.panelOpen.set(true);
        window.open();
        if (!picture_.selected.empty()) state_.selectedID.set(picture_.selected);
        state_.composerText.set(picture_.composer);
        speech_.partial.set(picture_.heard);
        window.view().insert("detailOpen", !picture_.selected.empty());
        window.view().insert("byKeyboard", picture_.byKeyboard);
        if (picture_.deletes) panel.deletions.remove(picture_.selected);
        settle();
        return grab(window, picture_.dark, picture_.composited);
    }

 private:
    void fill() {
        for (const auto& item : sampleHistory(picture_.language, executor_.date())) {
            history_.add(item, HistoryStore::Persist::no);
        }
    }

    const PanelPicture& picture_;
    ManualExecutor executor_;
    MemoryUserDefaults defaults_;
    FakeLoginItem loginItem_;
    FakePasteboard pasteboard_;
    FakeUrlOpener urls_;
    UnavailableSavePanel savePanel_;
    AtomicFileReplacer files_;
    TemporaryFolder folder_;
    FakeSpeechInput speech_;
    AppState state_;
    HistoryStore history_{folder_.path() / "dorix.sqlite"};
    Theme theme_;
    QQmlEngine engine_;
};

}  // namespace

std::vector<HistoryItem> sampleHistory(const std::string& language, double now) {
    const bool es = language == "es";
    const std::map<std::string, std::string> bundles{{"Notas", "com.apple.Notes"},
                                                     {"Word", "com.microsoft.Word"},
                                                     {"Terminal", "com.apple.Terminal"},
                                                     {"Firefox", "org.mozilla.firefox"}};
    const auto dictation = [&](std::string id, double hoursAgo, std::string app, std::string said,
                               std::string written) {
        const auto bundle = bundles.find(app);
        return HistoryItem{.id = std::move(id),
                           .kind = HistoryKind::dictado,
                           .app = std::move(app),
                           .bundleID = bundle == bundles.end() ? std::nullopt : std::optional(bundle->second),
                           .title = written.substr(0, written.find('.')),
                           .createdAt = now - hoursAgo * hour,
                           .query = std::move(said),
                           .answer = std::move(written),
                           .meta = {.tone = "Profesional",
                                    .engine = "Reglas básicas",
                                    .inserted = true,
                                    .durationMs = 4200,
                                    .source = "voz",
                                    .context = std::nullopt,
                                    .sources = std::nullopt}};
    };
    std::vector<HistoryItem> items;
    if (es) {
        items.push_back(dictation(
            "carlos", 0.4, "Gmail",
            "eh dile a Carlos que perfecto y que bueno podemos hablar mañana por la mañana a las diez",
            "Perfecto, Carlos. Podemos hablar mañana por la mañana, a las diez. Si te viene mejor por la "
            "tarde, dímelo y lo cambio.\n\nUn saludo,\nLucía"));
        items.push_back(dictation("lista", 2, "Notas", "comprar pan leche y pilas para el mando",
                                  "Comprar pan, leche y pilas para el mando."));
        items.push_back(
            dictation("retraso", 5, "WhatsApp", "llego diez minutos tarde", "Llego diez minutos tarde."));
        items.push_back(dictation("informe", 26, "Word", "el informe de ventas crece un doce por ciento",
                                  "El informe de ventas crece un 12 % respecto al trimestre anterior."));
        items.push_back(dictation("error", 30, "Terminal", "git commit corrige la fecha del recibo",
                                  "Corrige la fecha del recibo cuando cambia la hora."));
    } else {
        items.push_back(dictation(
            "carlos", 0.4, "Gmail", "um tell Carlos that's perfect and well we can talk tomorrow at ten",
            "That’s perfect, Carlos. We can talk tomorrow morning at ten. If the afternoon suits you better, "
            "tell me and I’ll move it.\n\nBest,\nLucía"));
        items.push_back(dictation("lista", 2, "Notas", "buy bread milk and batteries for the remote",
                                  "Buy bread, milk and batteries for the remote."));
        items.push_back(
            dictation("retraso", 5, "WhatsApp", "I'm ten minutes late", "I’m running ten minutes late."));
        items.push_back(dictation("informe", 26, "Word", "the sales report grows by twelve percent",
                                  "The sales report grows by 12% over the last quarter."));
        items.push_back(dictation("error", 30, "Terminal", "git commit fix the date of the receipt",
                                  "Fix the date of the receipt when the clocks change."));
    }
    HistoryItem search =
        dictation("velmar", 27, "Firefox", es ? "¿qué acordamos con Marta?" : "what did we agree with Marta?",
                  es ? answer : answerInEnglish);
    search.kind = HistoryKind::busqueda;
    search.title = es ? "Lo acordado con Marta sobre Velmar" : "What was agreed with Marta on Velmar";
    search.meta.tone = std::nullopt;
    search.meta.sources = {{"Contrato Velmar v3.docx", "Acta 12-06.md"}};
    items.push_back(search);
    for (int day = 5; day < 12; ++day) {
        items.push_back(dictation("old" + std::to_string(day), day * 24, day % 2 == 0 ? "Slack" : "Notas",
                                  es ? "revisar el presupuesto" : "check the budget",
                                  es ? "Revisar el presupuesto de la semana " + std::to_string(day) + "."
                                     : "Check the budget of week " + std::to_string(day) + "."));
    }
    return items;
}

std::vector<PanelPicture> panelPictures() {
    return {
        {.name = "dictation-es-light", .selected = "carlos"},
        {.name = "dictation-en-dark",
         .language = "en",
         .dark = true,
         .selected = "carlos",
         .byKeyboard = true},
        {.name = "answer-es-dark", .dark = true, .selected = "velmar"},
        {.name = "answer-en-light", .language = "en", .size = {900, 640}, .selected = "velmar"},
        {.name = "welcome-es-light"},
        {.name = "welcome-en-dark", .language = "en", .dark = true, .isEmpty = true},
        {.name = "no-match-es-light", .query = "factura de la luz"},
        {.name = "empty-section-es-dark", .dark = true, .section = PanelSection::accion, .selected = "lista"},
        {.name = "deleted-es-light",
         .selected = "lista",
         .deletes = true,
         .composer = "Resume la conversación de esta mañana con Ana\ny prepara una respuesta corta"},
        {.name = "recording-en-light", .language = "en", .selected = "retraso", .records = true},
        {.name = "hearing-es-dark",
         .dark = true,
         .selected = "old11",
         .records = true,
         .composer = "Resume lo de ayer.",
         .heard = "y dime qué queda por hacer antes del viernes con el contrato de Velmar porque Marta"},
        {.name = "narrow-list-es-light", .size = {560, 400}, .query = "presupuesto"},
        {.name = "narrow-detail-es-dark", .dark = true, .size = {560, 400}, .selected = "carlos"},
        {.name = "solid-es-light", .composited = false, .selected = "carlos"},
    };
}

std::vector<PanelPicture> largePanelPictures() {
    // A laptop's screen of 1366 x 768 pixels has that many points then.
    constexpr QSize laptop(683, 384);
    return {{.name = "dictation-es-light-2x", .selected = "carlos"},
            {.name = "small-list-es-dark-2x", .dark = true, .screen = laptop},
            {.name = "small-detail-en-light-2x", .language = "en", .screen = laptop, .selected = "velmar"}};
}

std::vector<PanelPicture> panelSheet(const std::string& language) {
    return {{.name = "dictation", .language = language, .selected = "carlos"},
            {.name = "answer", .language = language, .dark = true, .selected = "velmar"},
            {.name = "welcome", .language = language, .dark = true, .section = PanelSection::accion},
            {.name = "deleted",
             .language = language,
             .selected = "lista",
             .deletes = true,
             .byKeyboard = true,
             .composer = language == "es" ? "¿Dónde lo dejamos ayer?" : "Where did we leave off yesterday?"}};
}

QImage drawPanel(const PanelPicture& picture) { return Panel(picture).draw(); }

}  // namespace dorix::testing
