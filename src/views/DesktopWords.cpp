#include "views/DesktopWords.h"

#include "base/text/Text.h"

#include <array>

namespace dorix {

namespace {

struct Word {
    std::string_view from;
    std::string_view to;
};

// Longer ones before those that they contain; what is left of a symbol alone comes last.
constexpr std::array words{
    Word{"⌥ Opción derecha", "Alt derecha"},
    Word{"⌥ Right Option", "Right Alt"},
    Word{"⌘ Comando derecha", "Super derecha"},
    Word{"⌘ Right Command", "Right Super"},
    Word{"⌃ Control derecha", "Control derecha"},
    Word{"⌃ Right Control", "Right Control"},
    Word{"⌥ derecha", "Alt derecha"},
    Word{"Right ⌥", "Right Alt"},
    Word{"⌘ derecha", "Super derecha"},
    Word{"Right ⌘", "Right Super"},
    Word{"⌃ derecha", "Control derecha"},
    Word{"Right ⌃", "Right Control"},
    Word{"⌥⇧ Espacio", "Alt+Mayús+Espacio"},
    Word{"⌥⇧ Space", "Alt+Shift+Space"},
    Word{"⌥ Espacio", "Alt+Espacio"},
    Word{"⌥ Space", "Alt+Space"},
    Word{"⌘", "Ctrl+"},
    Word{"fn / 🌐", "fn"},

    // Whole texts first: what keeps a language model from running is another thing here.
    Word{"Este Mac no es compatible con Apple Intelligence.",
         "En este equipo no hay ningún modelo local. Instala un servidor de modelos, como Ollama o "
         "llama.cpp, y "
         "DORIX lo encontrará."},
    Word{"This Mac doesn’t support Apple Intelligence.",
         "There is no local model on this computer. Install a model server, such as Ollama or llama.cpp, and "
         "DORIX will find it."},
    Word{"Activa Apple Intelligence en Ajustes del Sistema.",
         "El servidor de modelos no tiene el modelo que hace falta. Descárgalo con él."},
    Word{"Turn on Apple Intelligence in System Settings.",
         "The model server doesn’t have the model it takes. Download it there."},
    Word{"El modelo de Apple Intelligence se está descargando.", "El modelo local se está cargando."},
    Word{"The Apple Intelligence model is downloading.", "The local model is loading."},

    Word{"Este Mac", "Este equipo"},
    Word{"este Mac", "este equipo"},
    Word{"tu Mac", "tu equipo"},
    Word{"This Mac", "This computer"},
    Word{"this Mac", "this computer"},
    Word{"your Mac", "your computer"},
    Word{" Activa DORIX en la lista.", ""},
    Word{" Turn on DORIX in the list.", ""},
    Word{"en Finder", "en el gestor de archivos"},
    Word{"in Finder", "in the file manager"},
    Word{"el Finder", "el gestor de archivos"},
    Word{"the Finder", "the file manager"},

    Word{"El modelo de Apple Intelligence", "El modelo local"},
    Word{"The Apple Intelligence model", "The local model"},
    Word{"Apple Intelligence (", "Modelo local ("},
    Word{"Apple Intelligence no está", "El modelo local no está"},
    Word{"Apple Intelligence isn’t", "The local model isn’t"},
    Word{"on Apple Intelligence", "on the local model"},
    Word{"or Apple Intelligence", "or the local model"},
    Word{"support Apple Intelligence", "support the local model"},
    Word{"Apple Intelligence", "el modelo local"},
};

}  // namespace

std::string desktopWords(std::string_view text) {
    std::string result(text);
    for (const auto& word : words) result = text::replaceAll(result, word.from, word.to);
    return result;
}

QString shown(std::string_view text) { return QString::fromStdString(desktopWords(text)); }

}  // namespace dorix
