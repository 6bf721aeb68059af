#include "routing/IntentPatterns.h"

#include <array>

namespace dorix::intentpatterns {

namespace {

// clang-format off
constexpr auto teachRows = std::to_array<std::string_view>({
    R"(^(aprende (a |como )?(archiv|guard|renombr|muev|mover|organiz|orden|clasific|registr|copi|lo hago|hago esto|hacer esto|hacerlo|esto)|observa (como|lo que)|observame|fijate (en )?(como|lo que) (lo )?hago|mira como lo hago|te (enseno|voy a ensenar) (a |como )?(archiv|guard|renombr|muev|mover|organiz|orden|clasific|registr|copi|lo hago|hago esto|hacer esto|hacerlo|esto)|learn (how|this)|watch (me|how)))",
    R"(^(learn how i|watch (me|how i|what i do)|observe (me|how i|what i do)|pay attention to how i|(let me |i'll |i will |i want to |i'm going to )?(show|teach) you how (i |to )?(file|save|rename|move|organize|organise|sort|archive|do (this|it))))",
});

constexpr auto searchRows = std::to_array<std::string_view>({
    R"( (busca|buscame|encuentra|encuentrame|localiza)( me)? (el|la|los|las|un|una|mi|mis|algun|alguna|todo|todos)? ?(documento|archivo|fichero|pdf|contrato|presupuesto|propuesta|factura|informe|correo|email|mail|nota|notas|presentacion|acta|oferta|excel|word|dictado|mensaje|manual|guia|catalogo|dossier|folleto|curriculum|cv|plantilla|hoja|foto|imagen|video|recibo|ticket|albaran|nomina|certificado|escritura|poliza) )",
    R"( (busca|buscame|encuentra|encuentrame)( me)? (donde|lo que|todo lo que) .*(hablamos|habla|dice|dijimos|aparece|menciona) )",
    R"( donde (esta|estaba|estan|tengo|tenia|guarde|deje|puse) (el|la|los|las|mi|mis|ese|esa|aquel|aquella) )",
    R"( (que|lo que) (acordamos|quedamos|hablamos|decidimos|dijimos) )",
    R"( quien me (hablo|dijo|envio|mando|paso|escribio) )",
    R"( (en que|que) (documento|archivo|fichero|pdf|contrato|presupuesto|propuesta|factura|informe|correo|email|mail|nota|notas|presentacion|acta|oferta|excel|word|dictado|mensaje|manual|guia|catalogo|dossier|folleto|curriculum|cv|plantilla|hoja|foto|imagen|video|recibo|ticket|albaran|nomina|certificado|escritura|poliza) )",
    R"( (el|la|los|las) (documento|archivo|fichero|pdf|contrato|presupuesto|propuesta|factura|informe|correo|email|mail|nota|notas|presentacion|acta|oferta|excel|word|dictado|mensaje|manual|guia|catalogo|dossier|folleto|curriculum|cv|plantilla|hoja|foto|imagen|video|recibo|ticket|albaran|nomina|certificado|escritura|poliza) (de|del|donde|que|sobre|con) .*(hablamos|habla|dice|decia|aparece|menciona|sale) )",
    R"( (tengo|hay) (algun|alguna|algo) .*(sobre|de|del) )",
    R"( (find|search for|where is|where did i put) )",
    R"( preparame (para )?(la|esta|una) (reunion|llamada|cita) )",
    R"( (que|quien|quienes|cuando|donde|cual|cuales|busca|buscame|encuentra|encuentrame)\b.* (en|de|por) (el )?slack )",
    R"( (busca|buscame|encuentra|mira|revisa)( me)? en (el )?slack )",
    R"(^ (can you |could you |please )?(find|look for|search|locate)( me)? (the|my|a|an|that|this|any|all|our) )",
    R"(^ (can you |could you |please )?(find|search|look for)( me)? (where|what|everything) .*(we talked|talked about|said|says|mentioned|mentions|appears) )",
    R"(^ where (is|are|was|were|did i (put|save|leave)) (the|my|that|this|our) )",
    R"(^ what did [a-z]+ (say|write|send|tell me|mention|ask)\b)",
    R"(^ (remind me )?what (did )?we (agree|agreed|decide|decided|discuss|discussed|say|said|talk about|talked about|settle|settled) )",
    R"(^ who (told|sent|emailed|wrote|messaged|mentioned) me )",
    R"(^ do i have (any|anything|something) .*(about|on|from|regarding) )",
    R"(^ (can you )?prepare me for (the|this|my|a) (meeting|call) )",
    R"(^ (what|who|when|where|which|find|search|look for)\b.* (in|on|from) slack )",
    R"(^ (can you |please )?(search|look|check)( in| on| through)? slack )",
});

constexpr auto actionRows = std::to_array<std::string_view>({
    R"(^(crea|creame|crear|agenda|agendame|programa|programame|pon|ponme|anade|apunta|reserva|organiza)( me)? (una|un|la|el)? ?(reunion|cita|evento|llamada|videollamada|recordatorio|tarea|alarma))",
    R"(^recuerdame (que |el |la |mañana|manana|pasado|hoy|esta|este|a las|en |llamar|enviar|revisar|comprar|hablar|escribir|pagar))",
    R"(^(envia|enviale|enviales|manda|mandale|mandales|reenvia|comparte)( me)? (este|esta|el|la|los|las|un|una|mi|mis)? ?(documento|archivo|pdf|fichero|presentacion|contrato|factura|informe|correo|email|mail|propuesta|presupuesto|enlace))",
    R"(^(prepara|preparame|redacta|redactame|escribe|escribeme)( me)? (un|una|este|el)? ?(borrador|correo|email|mail))",
    R"(^(guarda|mueve|copia|archiva|renombra|cambia el nombre)( me)? (este|esta|el|la|los|las|estos|estas|lo|la)? ?(documento|archivo|pdf|fichero|factura|carpeta|foto|imagen|presentacion|contrato)?)",
    R"(^(abre|abreme)( me)? (la carpeta|la web|la pagina|la app|la aplicacion|el enlace|https?|www))",
    R"(^(create|schedule|add) (a )?(meeting|event|reminder|task))",
    R"(^remind me )",
    R"(^(send|email) (this|the) )",
    R"(^(escribe|escribele|escribeles|manda|mandale|mandales|envia|enviale|enviales|dile|diles|pon|publica|avisa|comenta|pregunta|preguntale)\b.*\b(por|en|a traves de) (el )?slack\b)",
    R"(^(escribe|manda|envia|pon|publica|avisa|comenta|pregunta)( le| les)?\b.*\ben #?[a-z0-9_-]+ que\b)",
    R"(^(send|post|write|message)\b.*\b(on|in|via) slack\b)",
    R"(^(create|schedule|add|set up|setup|book|put|make|plan|arrange)( me)? (a |an |the )?(new )?(meeting|event|appointment|call|video call|reminder|task|alarm|to-do|todo)\b)",
    R"(^(set|add|create) (me )?(a )?reminder\b)",
    R"(\b(add|put|schedule|book|block|create|save)\b.*\b(to|on|in|into) (my |the )?(calendar|agenda|schedule)\b)",
    R"(^(can you|could you|would you|please|i want you to|i need you to)( please)? (create|schedule|add|set up|book|remind|send|email|forward|draft|write|prepare|move|save|archive|rename|open|put|block)\b.*\b(meeting|event|appointment|call|reminder|task|calendar|email|mail|document|file|pdf|folder|invoice|contract|slack|tomorrow|today|tonight|at [0-9]|monday|tuesday|wednesday|thursday|friday|saturday|sunday)\b)",
    R"(^(send|email|forward|share)( it| this| them)?( to [a-z]+)? (this|the|my|these|a|an) ?(document|file|pdf|presentation|contract|invoice|report|proposal|quote|link|draft)s?\b)",
    R"(^(draft|prepare)( me)? (a|an|the)? ?(draft|email|mail|reply)\b)",
    R"(^(move|copy|archive|rename|file)( this| the| these| that| my)? (document|file|pdf|invoice|folder|photo|image|picture|presentation|contract|report)s?\b)",
    R"(^open (the folder|folder|the website|the page|the app|the link|https?|www))",
    R"(^(remind me|schedule|book|block|set up) .*\b(tomorrow|today|tonight|this (morning|afternoon|evening)|next (week|monday|tuesday|wednesday|thursday|friday)|monday|tuesday|wednesday|thursday|friday|saturday|sunday|at [0-9]|at noon|on the [0-9]+))",
    R"(^(put|add|schedule|book|create|set up)( me)? .*\b(meeting|appointment|event|dentist|doctor|lunch|dinner|breakfast|birthday|flight|interview|reminder)\b)",
    R"(^(tell|ask|message|dm|ping|write to|send|post|let)\b.*\b(on|in|via|over|through) slack\b)",
    R"(^(post|write|send|say)\b.*\b(in|to) #[a-z0-9_-]+\b)",
    R"(\b(pon|ponme|ponlo|pongas|poner|anade|anademe|anadelo|anadas|anadir|mete|meteme|metelo|meter|apunta|apuntame|apuntalo|apuntar|agenda|agendame|agendar|crea|creame|crear|programa|programar|reserva|reservame|bloquea|bloqueame|bloquear)\b.*\b(calendario|agenda|calendar)\b)",
    R"(^(me )?(puedes|podrias|quiero que|necesito que|haz el favor de)( me)? (crear|crearme|agendar|agendarme|poner|ponerme|anadir|apuntar|apuntarme|programar|reservar|recordar|recordarme|enviar|mandar|preparar|redactar|mover|guardar|archivar|abrir|crees|agendes|pongas|anadas|apuntes|programes|reserves|recuerdes|envies|mandes|prepares|redactes|muevas|guardes|archives|abras)\b)",
    R"(^(agendame|apuntame|reservame|bloqueame|avisame|recuerdame) .*\b(manana|pasado|hoy|esta tarde|esta noche|lunes|martes|miercoles|jueves|viernes|sabado|domingo|a las [0-9]|a la una|el dia [0-9]|[0-9]+ de ))",
    R"(^(pon|ponme|mete|meteme|anade|apunta|agenda|crea|programa)( me)? .*\b(reunion|cita|evento|llamada|videollamada|dentista|medico|comida|cena|desayuno|cumpleanos|vuelo|entrevista|recordatorio)\b)",
});

constexpr auto meetingStartRows = std::to_array<std::string_view>({
    R"(^(activa|empieza|inicia|arranca|enciende|pon)( el)? (copiloto|modo reunion|meets|dorix meets)|^escucha (la|esta) (reunion|llamada)|^start (the )?meeting|^(start|turn on|activate|enable|launch|begin|switch on)( the| my)? (meeting )?(copilot|co-pilot|co pilot|meeting mode|meets|dorix meets)|^(listen to|transcribe) (the|this|my) (meeting|call))",
});

constexpr auto meetingStopRows = std::to_array<std::string_view>({
    R"(^(termina|para|deten|apaga|finaliza|cierra)( el)? (copiloto|modo reunion|meets|dorix meets|la reunion|de escuchar)|^stop (the )?meeting|^(stop|end|finish|turn off|deactivate|disable|close|switch off)( the| my)? (meeting )?(copilot|co-pilot|co pilot|meeting mode|meets|dorix meets)|^stop listening( to (the|this|my) (meeting|call))?|^(end|finish) (the|this|my) (meeting|call))",
});

constexpr auto teachDoneRows = std::to_array<std::string_view>({
    R"(^(ya esta|ya lo he hecho|ya he terminado|listo|termine|deja de (aprender|observar)|para de (aprender|observar)|done|that's it|thats it|that is it|i'm done|im done|i am done|all done|finished|i'm finished|im finished|that's all|thats all|stop (learning|watching|observing)( me)?)$)",
});

constexpr auto secretNameRows = std::to_array<std::string_view>({
    R"((clave|password|contrasena|secret|credencial|credential|token|apikey|api-key|api_key|\.env|id_rsa|privad|private|keychain))",
});

constexpr auto secretContentRows = std::to_array<std::string_view>({
    R"((?i)(sk-[a-z0-9_-]{16,}|-----BEGIN [A-Z ]*PRIVATE KEY|\b(contraseña|password|passwd|pw|pwd)\s*[:=]|AKIA[0-9A-Z]{16}|xox[bpa]-[0-9a-z-]{10,}|ghp_[0-9a-z]{30,}))",
});
// clang-format on

}  // namespace

std::span<const std::string_view> teach() { return teachRows; }
std::span<const std::string_view> search() { return searchRows; }
std::span<const std::string_view> action() { return actionRows; }
std::span<const std::string_view> meetingStart() { return meetingStartRows; }
std::span<const std::string_view> meetingStop() { return meetingStopRows; }
std::span<const std::string_view> teachDone() { return teachDoneRows; }
std::span<const std::string_view> secretName() { return secretNameRows; }
std::span<const std::string_view> secretContent() { return secretContentRows; }

}  // namespace dorix::intentpatterns
