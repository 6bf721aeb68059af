#include "base/text/Text.h"
#include "base/writing/Faithfulness.h"
#include "service/ai/RuleWriter.h"

#include <gtest/gtest.h>

#include <array>
#include <ctime>
#include <random>
#include <set>

namespace dorix::service {

namespace {

std::string written(std::string_view transcript, std::string_view tone = "neutral") {
    return writeByRules({.transcript = std::string(transcript), .tone = std::string(tone)}).texto;
}

struct Case {
    std::string_view said;
    std::string_view text;
};

}  // namespace

TEST(RuleWriter, DropsFillersThatMeanNothing) {
    for (const auto [said, text] : std::to_array<Case>({
             {"eh, mañana te llamo", "Mañana te llamo."},
             {"mañana eh te llamo ehm por la tarde", "Mañana te llamo por la tarde."},
             {"Bueno, pues, quedamos el lunes, ¿vale?", "Quedamos el lunes."},
             {"um I think uh we should go", "I think we should go."},
             {"Well, you know, it works.", "It works."},
             {"Ese informe está listo, este, y aquel también", "Ese informe está listo y aquel también."},
             {"Este informe está listo", "Este informe está listo."},
             {"bueno es saberlo", "Bueno es saberlo."},
             {"el el informe de de ventas", "El informe de ventas."},
             {"mide 10 mm de largo", "Mide 10 mm de largo."},
             {"¿eh?", "¿Eh?"},
             {"eh", "Eh"},
             {"Um acht Uhr will ich in das Büro", "Um acht Uhr will ich in das Büro"},
             {"I like it, like, a lot", "I like it a lot."},
             {"I like it", "I like it."},
             {"Hola Ana, eh, te llamo luego", "Hola Ana, te llamo luego."},
             {"Ana, Luis y, eh, y Eva", "Ana, Luis y Eva."},
             {"on, on the the, the table", "On the table."},
             {"nos vemos luego vale", "Nos vemos luego."},
             {"la entrada del lunes vale", "La entrada del lunes vale."},
             {"dime lo que el coche vale", "Dime lo que el coche vale."},
             {"i mean we could go", "We could go."},
             {"i mean it", "I mean it."},
             {"bueno pues eh mira lo que dice", "Mira lo que dice."},
             {"vale", "Vale"},
         }))
        EXPECT_EQ(written(said), text) << said;
}

TEST(RuleWriter, KeepsTheCorrectionOnlyWhereItIsOne) {
    for (const auto [said, text] : std::to_array<Case>({
             {"quedamos el martes, no, el miércoles", "Quedamos el miércoles."},
             {"Let's meet Tuesday, no, Wednesday", "Let's meet Wednesday."},
             {"Let's meet on Tuesday at three, sorry, Wednesday at four.",
              "Let's meet on Wednesday at four."},
             {"llego a las tres y media, perdón, a las cuatro", "Llego a las cuatro."},
             {"llego a las tres perdón a las cuatro en tren", "Llego a las cuatro en tren."},
             {"nos vemos el lunes digo el jueves en la oficina", "Nos vemos el jueves en la oficina."},
             {"cuesta 15 euros, no, 16 euros", "Cuesta 16 euros."},
             {"es el 3 de mayo, mejor dicho, el 4 de junio", "Es el 4 de junio."},
             {"Llama a Juan, perdón, a Pedro esta tarde", "Llama a Pedro esta tarde."},
             {"Quedamos el martes. No, el miércoles.", "Quedamos el miércoles."},
             {"el informe, perdón, el resumen está listo", "El resumen está listo."},
             {"Mándalo el lunes, borra eso, mándalo el martes", "Mándalo el martes."},
             {"Send it Monday, scratch that, send it on Friday", "Send it on Friday."},
             {"paso por la mañana, no, no, por la tarde", "Paso por la tarde."},
             {"send it to Mark, I mean, to Mike", "Send it to Mike."},
             {"quedamos el martes, eh, no, el miércoles", "Quedamos el miércoles."},
             // What was meant stays.
             {"quedamos el martes, no el miércoles", "Quedamos el martes, no el miércoles."},
             {"quedamos el martes no el miércoles", "Quedamos el martes no el miércoles."},
             {"No puedo el martes, no, el miércoles sí", "No puedo el martes, no, el miércoles sí."},
             {"me gusta el martes, no, el miércoles no puedo",
              "Me gusta el martes, no, el miércoles no puedo."},
             {"quedamos el lunes, no, el martes tengo médico",
              "Quedamos el lunes, no, el martes tengo médico."},
             {"somos tres, no, a las cuatro llega otro", "Somos tres, no, a las cuatro llega otro."},
             {"cuesta 15 euros, no, 16", "Cuesta 15 euros, no, 16."},
             {"Tuesday at three, no, Wednesday", "Tuesday at three, no, Wednesday."},
             {"perdí el tren, perdón, el próximo sale a las cinco",
              "Perdí el tren, perdón, el próximo sale a las cinco."},
             {"te pido perdón el lunes", "Te pido perdón el lunes."},
             {"I'm free Monday, sorry, Tuesday works better",
              "I'm free Monday, sorry, Tuesday works better."},
             {"vino Juan Pérez, no, Pedro", "Vino Juan Pérez, no, Pedro."},
             {"treinta y tres, no, treinta y cuatro", "Treinta y cuatro."},
             {"el martes, no, mañana", "El martes, no, mañana."},
         }))
        EXPECT_EQ(written(said), text) << said;
}

TEST(RuleWriter, WritesMarksThatAreDictatedAndWordsThatAreNot) {
    for (const auto [said, text] : std::to_array<Case>({
             {"hola coma qué tal punto todo bien por aquí punto", "Hola, ¿qué tal? Todo bien por aquí."},
             {"primera línea nueva línea segunda línea", "Primera línea\nSegunda línea."},
             {"vienes mañana signo de interrogación", "¿Vienes mañana?"},
             {"abre interrogación cómo estás cierra interrogación bien", "¿Cómo estás? Bien."},
             {"acaba aquí punto y aparte empieza otra cosa", "Acaba aquí.\nEmpieza otra cosa."},
             {"dear team comma new paragraph the build works period", "Dear team,\n\nThe build works."},
             {"hello John comma thanks for the update period talk to you soon period",
              "Hello John, thanks for the update. Talk to you soon."},
             {"is it ready question mark", "Is it ready?"},
             {"nuevo párrafo", "Nuevo párrafo"},
             {"trae dos puntos pan coma leche punto y coma y vino", "Trae: pan, leche; y vino."},
             {"abre paréntesis ver anexo cierra paréntesis", "(Ver anexo)"},
             // Content.
             {"quiero que mi hijo coma verduras", "Quiero que mi hijo coma verduras."},
             {"es el 3 coma 5 por ciento", "Es el 3,5 por ciento."},
             {"see you at the end of period two", "See you at the end of period two."},
             {"está en coma desde ayer", "Está en coma desde ayer."},
             {"hasta cierto punto tienes razón", "Hasta cierto punto tienes razón."},
             {"llega a las tres en punto", "Llega a las tres en punto."},
             {"desde mi punto de vista es caro", "Desde mi punto de vista es caro."},
             {"during the trial period it is free", "During the trial period it is free."},
             {"add a question mark there", "Add a question mark there."},
             {"una nueva línea de negocio", "Una nueva línea de negocio."},
             {"ganamos por dos puntos en la final", "Ganamos por dos puntos en la final."},
         }))
        EXPECT_EQ(written(said), text) << said;
}

TEST(RuleWriter, PunctuatesQuestionsAndSentences) {
    for (const auto [said, text] : std::to_array<Case>({
             {"qué hora es", "¿Qué hora es?"},
             {"Hola Ana, cómo estás", "Hola Ana, ¿cómo estás?"},
             {"vienes mañana?", "¿Vienes mañana?"},
             {"Ready?", "Ready?"},
             {"tu viens avec nous demain ?", "Tu viens avec nous demain ?"},
             {"qué bonito es esto", "Qué bonito es esto."},
             {"que vengas mañana dice", "Que vengas mañana dice."},
             {"when you arrive call me", "When you arrive, call me."},
             {"can you call me when you arrive", "Can you call me when you arrive?"},
             {"i think i'm late on tuesday", "I think I'm late on Tuesday."},
             {"el Sr. García llega. mañana hablamos", "El Sr. García llega. Mañana hablamos."},
             {"sí claro", "Sí claro"},
             {"ya veremos…", "Ya veremos…"},
         }))
        EXPECT_EQ(written(said), text) << said;
    EXPECT_EQ(written("git commit --amend", "tecnico"), "git commit --amend");
    EXPECT_EQ(written("", "neutral"), "");
}

TEST(RuleWriter, EndsSentencesThatCameWithoutPunctuation) {
    for (const auto [said, text] : std::to_array<Case>({
             {"dónde estás llevo una hora esperándote", "¿Dónde estás? Llevo una hora esperándote."},
             {"si te interesa escríbeme", "Si te interesa, escríbeme."},
             {"busco piso en madrid si sabes de alguno avísame",
              "Busco piso en Madrid. Si sabes de alguno, avísame."},
             {"no sé si te va bien dime cuándo puedes", "No sé si te va bien dime cuándo puedes."},
             {"tengo las actas de enero y febrero te las mando",
              "Tengo las actas de enero y febrero. Te las mando."},
             {"hola ana qué tal te escribo por lo del lunes",
              "Hola Ana, ¿qué tal? Te escribo por lo del lunes."},
             {"thank you for coming we have a lot to do", "Thank you for coming. We have a lot to do."},
             {"i merged the fix could you look at it", "I merged the fix. Could you look at it?"},
             {"however it works", "However, it works."},
             // One sentence.
             {"el hombre que conocí ayer me dijo que vive aquí",
              "El hombre que conocí ayer me dijo que vive aquí."},
             {"me parece que la idea que tuviste es buena", "Me parece que la idea que tuviste es buena."},
             {"mi hermana y mi padre están en casa", "Mi hermana y mi padre están en casa."},
             {"llegué hace dos años", "Llegué hace dos años."},
             {"the people we were talking about are here", "The people we were talking about are here."},
             {"the way you are doing it is wrong", "The way you are doing it is wrong."},
             {"i think he said she was coming", "I think he said she was coming."},
             {"everything you said is true", "Everything you said is true."},
             {"this is a tool that would break", "This is a tool that would break."},
         }))
        EXPECT_EQ(written(said), text) << said;
}

TEST(RuleWriter, WritesNumbersAsPeopleDo) {
    for (const auto [said, text] : std::to_array<Case>({
             {"nació en mil novecientos ochenta y siete", "Nació en 1987."},
             {"la mesa cuesta doce coma cinco euros", "La mesa cuesta 12,5 euros."},
             {"sale a las ocho y veinte el tres de mayo", "Sale a las 8:20 el 3 de mayo."},
             {"mi número es el seis uno dos tres cuatro cinco", "Mi número es el 612345."},
             {"son ciento diez mil personas",
              "Son 110\xC2\xA0"
              "000 personas."},
             {"it opened in nineteen thirty seven with two hundred and fifty rooms",
              "It opened in 1937 with 250 rooms."},
             {"the code is four oh one nine at three thirty", "The code is 4019 at 3:30."},
             {"version two point one has one hundred and ten thousand lines",
              "Version 2.1 has 110,000 lines."},
             {"on the twenty second of july", "On the twenty-second of July."},
             // Words that read better as words, and what is no one number.
             {"llego en diez minutos", "Llego en diez minutos."},
             {"hay uno o dos", "Hay uno o dos."},
             {"cuesta dos euros con cincuenta", "Cuesta dos euros con cincuenta."},
             {"a las ocho y diez personas", "A las ocho y diez personas."},
             {"they are four dollars fifty each", "They are four dollars fifty each."},
             {"i read nineteen eighty four", "I read nineteen eighty four."},
         }))
        EXPECT_EQ(written(said), text) << said;
    EXPECT_EQ(written("escucha en el puerto veinte mil ochenta", "tecnico"), "escucha en el puerto 20080");
}

TEST(RuleWriter, GivesNamesTheirCapitals) {
    for (const auto [said, text] : std::to_array<Case>({
             {"pablo ruiz vive en nueva york con marta", "Pablo Ruiz vive en Nueva York con Marta."},
             {"me llamo rosa y compré una rosa", "Me llamo Rosa y compré una rosa."},
             {"compré una magdalena en paris", "Compré una magdalena en Paris."},
             {"i may march on the first of may or in march", "I may march on the first of May or in March."},
             {"mr whitfield speaks french on fridays", "Mr Whitfield speaks French on Fridays."},
             {"nos vemos el lunes en enero por el iva", "Nos vemos el lunes en enero por el IVA."},
         }))
        EXPECT_EQ(written(said), text) << said;
}

TEST(RuleWriter, MakesAMessageOfWhatIsToBeSaid) {
    EXPECT_EQ(written("dile a juan que llego a las ocho"), "Juan, llego a las ocho.");
    EXPECT_EQ(written("tell ana the build is green"), "Ana, the build is green.");
    EXPECT_EQ(written("tell ana that i am late", "profesional"), "Ana,\n\nI am late.");
    for (const auto stays :
         {"dile a Juan que venga.", "dile a Juan que está cansado.", "dile a Juan que la quiero.",
          "tell John to call me.", "tell John she is late.", "tell me what you think."})
        EXPECT_EQ(written(stays), text::capitalizeFirst(stays));
}

TEST(RuleWriter, WritesSignsOfCommandsAndComments) {
    for (const auto [said, text] : std::to_array<Case>({
             {"docker run dash dash rm dash it ubuntu bash", "docker run --rm -it ubuntu bash"},
             {"cd slash var slash log", "cd /var/log"},
             {"mira el directorio barra etc barra nginx", "mira el directorio /etc/nginx"},
             {"comentario esto falla sin red", "// esto falla sin red"},
             {"comment out this line", "comment out this line"},
             {"el operador menos resta dos", "el operador menos resta dos"},
             {"make sure the dash works", "make sure the dash works"},
             {"why does it fail", "Why does it fail?"},
             {"Eh, añade un test", "Añade un test"},
             {"Um, created_at is missing", "created_at is missing"},
         }))
        EXPECT_EQ(written(said, "tecnico"), text) << said;
}

TEST(RuleWriter, MakesListsOfWhatIsCounted) {
    for (const auto [said, text] : std::to_array<Case>({
             {"hay que hacer varias cosas primero comprar pan segundo llamar a Ana y tercero pagar la luz",
              "Hay que hacer varias cosas:\n1. Comprar pan\n2. Llamar a Ana\n3. Pagar la luz"},
             {"Primero, comprar pan. Segundo, llamar a Ana.", "1. Comprar pan.\n2. Llamar a Ana."},
             {"lista de la compra uno leche dos pan tres huevos",
              "Lista de la compra:\n1. Leche\n2. Pan\n3. Huevos"},
             {"first, open the door, second, close it, finally, lock it",
              "1. Open the door\n2. Close it\n3. Lock it"},
             {"bullet point milk bullet point bread bullet point eggs", "- Milk\n- Bread\n- Eggs"},
             {"lo primero es comer y lo segundo dormir", "Lo primero es comer y lo segundo dormir."},
             {"el primero de mayo y el segundo piso", "El primero de mayo y el segundo piso."},
             {"uno, leche, dos, pan, tres, huevos", "1. Leche\n2. Pan\n3. Huevos"},
             {"uno dos tres", "Uno dos tres."},
             {"trae uno grande dos medianos y tres chicos", "Trae uno grande dos medianos y tres chicos."},
             {"primero fui a casa y segundo me da igual", "Primero fui a casa y segundo me da igual."},
             {"one of the two or three", "One of the two or three."},
             {"paso uno abre la tapa paso dos cambia el filtro paso tres cierra",
              "1. Abre la tapa\n2. Cambia el filtro\n3. Cierra"},
         }))
        EXPECT_EQ(written(said), text) << said;
}

TEST(RuleWriter, FramesAMailWithWhatWasDictatedAlone) {
    EXPECT_EQ(written("Hola Ana, te mando el informe. Un saludo, Juan", "profesional"),
              "Hola Ana,\n\nTe mando el informe.\n\nUn saludo,\nJuan");
    EXPECT_EQ(written("Dear Mr. Smith, thanks for the call. Best regards.", "profesional"),
              "Dear Mr. Smith,\n\nThanks for the call.\n\nBest regards.");
    EXPECT_EQ(written("te mando el informe", "profesional"), "Te mando el informe.");
    EXPECT_EQ(
        written("buenos días señor robles le adjunto la factura muchas gracias un saludo ana", "profesional"),
        "Buenos días, señor Robles,\n\nLe adjunto la factura. Muchas gracias.\n\nUn saludo,\nAna");
    EXPECT_EQ(written("Hola, equipo. Os paso el acta.", "profesional"), "Hola, equipo,\n\nOs paso el acta.");
    EXPECT_EQ(written("dale un saludo a Juan", "profesional"), "Dale un saludo a Juan.");
    EXPECT_EQ(written("Hola Ana, te mando el informe. Un saludo, Juan", "cercano"),
              "Hola Ana, te mando el informe. Un saludo, Juan.");
    const auto answer =
        writeByRules({.transcript = "Hola Ana, te mando el informe de ventas del primer trimestre",
                      .tone = "profesional",
                      .signatureName = "Eva"});
    EXPECT_EQ(answer.titulo, "Te mando el informe de ventas");
    EXPECT_EQ(answer.texto.find("Eva"), std::string::npos);
}

TEST(RuleWriter, AsksOnlyWhereThereIsNothingToWriteTo) {
    const auto action = [](std::string transcript, std::optional<bool> focus, bool allowAsk = true) {
        return writeByRules({.transcript = std::move(transcript),
                             .tone = "neutral",
                             .allowAsk = allowAsk,
                             .editableFocus = focus})
            .accion;
    };
    EXPECT_EQ(action("qué pone en este correo", false), "preguntar");
    EXPECT_EQ(action("summarize the document", false), "preguntar");
    EXPECT_EQ(action("qué pone en este correo", true), "escribir");
    EXPECT_EQ(action("qué pone en este correo", std::nullopt), "escribir");
    EXPECT_EQ(action("qué pone en este correo", false, false), "escribir");
    EXPECT_EQ(action("oye DORIX, cuánto es esto", std::nullopt), "preguntar");
    EXPECT_EQ(action("mañana llego tarde", false), "escribir");
}

/// Utterances of words that the rules know and words that they do not, in no order that makes sense.
class Babble {
 public:
    explicit Babble(unsigned seed) : random_(seed) {}

    std::string next(std::size_t words) {
        std::string text;
        for (std::size_t i = 0; i < words; ++i) {
            if (!text.empty()) text += random_() % 40 == 0 ? "\n" : " ";
            text += pick(vocabulary) + pick(marks);
        }
        return text;
    }

 private:
    template <typename Rows>
    std::string pick(const Rows& rows) {
        return std::string(rows[random_() % rows.size()]);
    }

    static constexpr auto vocabulary = std::to_array<std::string_view>({
        "el",         "martes",  "miércoles", "no",      "perdón",   "digo",    "mejor",       "dicho",
        "eh",         "este",    "bueno",     "coma",    "punto",    "y",       "aparte",      "nueva",
        "línea",      "primero", "segundo",   "tercero", "uno",      "dos",     "tres",        "qué",
        "hora",       "es",      "informe",   "Ana",     "Pedro",    "llama",   "a",           "las",
        "the",        "Tuesday", "Monday",    "sorry",   "i",        "mean",    "scratch",     "that",
        "send",       "it",      "comma",     "period",  "question", "mark",    "first",       "second",
        "third",      "finally", "hola",      "gracias", "saludo",   "un",      "abre",        "cierra",
        "paréntesis", "guion",   "bullet",    "point",   "15",       "euros",   "presupuesto", "vale",
        "reunión",    "mañana",  "tarde",     "in",      "new",      "borra",   "eso",         "manda",
        "mil",        "ochenta", "por",       "ciento",  "twenty",   "hundred", "and",         "thousand",
        "oh",         "dile",    "que",       "tell",    "tengo",    "me",      "puedes",      "está",
        "si",         "if",      "they",      "are",     "can",      "you",     "please",      "dash",
        "slash",      "barra",   "git",       "comment", "todo",     "marta",   "ruiz",        "buenos",
        "días",       "señor",   "cuándo",    "iva",
    });
    static constexpr auto marks =
        std::to_array<std::string_view>({"", "", "", "", "", "", ",", ",", ".", "?", "…", " -", ":"});

    std::mt19937 random_;
};

TEST(RuleWriter, PutsNoWordInThatWasNotSaid) {
    Babble babble(7);
    for (int round = 0; round < 800; ++round) {
        const auto said = babble.next(1 + static_cast<std::size_t>(round) % 40);
        const auto tone = round % 3 == 0 ? "profesional" : round % 3 == 1 ? "tecnico" : "neutral";
        const auto text = written(said, tone);
        ASSERT_GE(faithfulnessScore(text, said), 0.3) << said;
        ASSERT_FALSE(text.empty()) << said;
        const auto folded = text::fold(said);
        const auto runs = text::letterRuns(folded);
        const std::set<std::string_view> words(runs.begin(), runs.end());
        const auto produced = text::fold(text);
        for (const auto word : text::letterRuns(produced))
            ASSERT_TRUE(words.contains(word)) << said << "\n" << text;
    }
}

TEST(RuleWriter, TakesTimeInProportion) {
    Babble babble(11);
    std::vector<std::string> dictations{babble.next(10'000)};
    for (const auto piece :
         {"no, ", "((", "uno ", "coma ", "martes, no, ", "qué, ", "gracias ", "dime cuándo ", "mil y ",
          "Ana ", "con eh ", "barra x ", "if i ", "hola ", "the is "}) {
        std::string text;
        while (text.size() < 25'000) text += piece;
        dictations.push_back(std::move(text));
    }
    for (const auto& said : dictations) {
        const auto start = std::clock();
        writeByRules({.transcript = said, .tone = "profesional"});
        const double seconds = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
        // Time that grows with the square takes longer.
        EXPECT_LT(seconds, 4) << said.substr(0, 40);
    }
}

}  // namespace dorix::service
