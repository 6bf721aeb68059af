#include "service/ai/writing/NameTables.h"

#include <array>

namespace dorix::service::names {

// clang-format off
const WordSet& spanishGiven() {
    static const WordSet set({
        "adrian", "adriana", "agustin", "ainhoa", "alberto", "alejandra", "alejandro", "alfonso", "alfredo", "alicia",
        "almudena", "alvaro", "ana", "andrea", "andres", "antonia", "antonio", "arturo", "beatriz", "begona",
        "belen", "berta", "borja", "carla", "carlos", "carmen", "carolina", "catalina", "cecilia", "celia", "cesar",
        "claudia", "cristian", "cristina", "daniel", "daniela", "david", "diana", "diego", "eduardo", "elena", "elisa",
        "emilia", "emilio", "emma", "enrique", "ernesto", "esteban", "esther", "eugenia", "eugenio", "fatima",
        "federico", "felipe", "fernanda", "fernando", "francisca", "francisco", "gabriel", "gabriela", "gerardo",
        "gonzalo", "guadalupe", "guillermo", "gustavo", "hector", "hugo", "ignacio", "ines", "inmaculada", "irene",
        "isabel", "isabela", "ismael", "ivan", "jaime", "javier", "jesus", "joaquin", "jordi", "jorge", "jose",
        "josefa", "juan", "juana", "julia", "julian", "laia", "laura", "leticia", "lidia", "lorena", "lorenzo",
        "lucas", "lucia", "luis", "luisa", "magdalena", "maite", "manuel", "manuela", "marcelo", "marcelino", "maria",
        "mariana", "mariano", "mario", "marta", "martin", "martina", "mateo", "matias", "mauricio", "miguel", "miriam",
        "monica", "montserrat", "natalia", "nerea", "nicolas", "noelia", "noemi", "nuria", "olga", "oscar", "pablo",
        "paloma", "patricia", "patricio", "paula", "pedro", "rafael", "ramon", "raquel", "raul", "ricardo", "roberto",
        "rocio", "rodrigo", "ruben", "samuel", "sandra", "sara", "sebastian", "sergio", "silvia", "simon", "sofia",
        "sonia", "susana", "tamara", "teresa", "tomas", "valentina", "valeria", "vanesa", "veronica", "vicente",
        "victor", "ximena", "yolanda", "zoe",
    });
    return set;
}

const WordSet& englishGiven() {
    static const WordSet set({
        "aaron", "abigail", "adam", "alan", "albert", "alex", "alexander", "alexis", "alice", "amanda", "amelia", "amy",
        "ana", "andrea", "andrew", "angela", "ann", "anna", "anne", "anthony", "ashley", "barbara", "ben", "benjamin",
        "betty", "brandon", "brenda", "brian", "bruce", "caroline", "catherine", "charles", "charlotte", "cheryl",
        "chloe", "chris", "christina", "christine", "christopher", "claire", "cynthia", "dan", "daniel", "danielle",
        "david", "deborah", "debra", "dennis", "diana", "diane", "donald", "donna", "dorothy", "douglas", "dylan",
        "edward", "elena", "elizabeth", "ellen", "emily", "emma", "eric", "ethan", "eugene", "evelyn", "gabriel",
        "gary", "george", "gerald", "gregory", "hannah", "harold", "heather", "helen", "henry", "howard", "isaac",
        "isabella", "jack", "jacob", "jacqueline", "jake", "james", "jane", "janet", "jason", "jeffrey", "jennifer",
        "jeremy", "jerry", "jessica", "joan", "joe", "john", "johnny", "jonathan", "joseph", "joshua", "joyce",
        "juan", "judith", "julia", "julie", "justin", "karen", "kate", "katherine", "kathleen", "keith", "kelly",
        "kenneth", "kevin", "kimberly", "kyle", "larry", "laura", "lauren", "lawrence", "leo", "liam", "linda", "lisa",
        "logan", "louis", "lucas", "lucy", "luke", "madison", "margaret", "maria", "marie", "marilyn", "martha",
        "martin", "mary", "matthew", "megan", "melissa", "mia", "michael", "michelle", "mike", "nancy", "natalie",
        "nathan", "nicholas", "nicole", "noah", "oliver", "olivia", "pamela", "patricia", "patrick", "paul", "peter",
        "philip", "rachel", "ralph", "raymond", "rebecca", "richard", "robert", "roger", "ronald", "russell",
        "ryan", "sam", "samantha", "samuel", "sandra", "sara", "sarah", "sean", "sharon", "shirley", "sophia",
        "sophie", "stephanie", "stephen", "steve", "steven", "susan", "teresa", "theresa", "thomas", "tim", "timothy",
        "tom", "tyler", "victoria", "vincent", "virginia", "walter", "wayne", "william", "zachary",
    });
    return set;
}

const WordSet& family() {
    static const WordSet set({
        "adams", "aguilar", "allen", "alonso", "alvarez", "anderson", "arias", "bailey", "baker", "benitez", "bennett",
        "brooks", "brown", "cabrera", "campbell", "campos", "cano", "carmona", "carrasco", "carter", "castillo",
        "castro", "clark", "collins", "cooper", "cortes", "crespo", "davis", "delgado", "diaz", "diez", "dominguez",
        "duran", "edwards", "esteban", "evans", "fernandez", "ferrer", "flores", "fuentes", "gallardo", "garcia",
        "garrido", "gil", "gimenez", "gomez", "gonzalez", "gray", "green", "guerrero", "gutierrez", "hall", "harris",
        "hernandez", "herrera", "hidalgo", "hill", "howard", "hughes", "ibanez", "iglesias", "jackson", "jimenez",
        "johnson", "jones", "king", "lewis", "lopez", "lozano", "marin", "marquez", "martin", "martinez", "medina",
        "mendez", "miller", "mitchell", "molina", "montero", "moore", "mora", "morales", "moreno", "morgan", "morris",
        "moya", "munoz", "murphy", "navarro", "nelson", "nieto", "nunez", "ortega", "ortiz", "parker", "parra",
        "pascual", "perez", "peterson", "phillips", "prieto", "ramirez", "ramos", "reyes", "richardson", "roberts",
        "robinson", "robles", "rodriguez", "rogers", "rojas", "roman", "romero", "rubio", "ruiz", "saez", "sanchez",
        "santana", "santos", "sanz", "scott", "serrano", "smith", "soler", "soto", "stewart", "suarez", "taylor",
        "thomas", "thompson", "torres", "turner", "vargas", "vazquez", "vega", "velasco", "vidal", "walker", "white",
        "williams", "wilson", "wright",
    });
    return set;
}

const WordSet& spanishPlaces() {
    static const WordSet set({
        "africa", "alemania", "alicante", "america", "andalucia", "aragon", "argentina", "asia", "asturias", "australia",
        "austria", "badajoz", "barcelona", "belgica", "berlin", "bilbao", "bogota", "bolivia", "brasil", "bruselas",
        "burgos", "cadiz", "canada", "caracas", "cataluna", "china", "colombia", "cordoba", "cuba", "dinamarca",
        "ecuador", "escocia", "espana", "europa", "extremadura", "finlandia", "francia", "galicia", "gijon", "girona",
        "grecia", "guadalajara", "guatemala", "holanda", "honduras", "huelva", "inglaterra", "irlanda", "italia",
        "jaen", "japon", "lisboa", "londres", "madrid", "malaga", "mallorca", "marruecos", "medellin", "mexico",
        "milan", "monterrey", "montevideo", "murcia", "navarra", "nicaragua", "noruega", "oviedo", "pamplona", "panama",
        "paraguay", "paris", "peru", "polonia", "portugal", "quito", "roma", "rusia", "salamanca", "santander",
        "segovia", "sevilla", "suecia", "suiza", "tarragona", "tenerife", "tokio", "toledo", "uruguay", "valencia",
        "valladolid", "venezuela", "vigo", "zaragoza",
    });
    return set;
}

const WordSet& englishPlaces() {
    static const WordSet set({
        "africa", "america", "amsterdam", "argentina", "asia", "athens", "atlanta", "australia", "austria", "barcelona",
        "beijing", "belgium", "berlin", "birmingham", "boston", "brazil", "bristol", "britain", "brooklyn", "brussels",
        "california", "cambridge", "canada", "chicago", "colombia", "colorado", "copenhagen", "dallas", "delhi",
        "denmark", "denver", "detroit", "dublin", "edinburgh", "egypt", "england", "europe", "finland", "florida",
        "france", "geneva", "germany", "glasgow", "greece", "heathrow", "houston", "india", "indonesia", "ireland",
        "istanbul", "italy", "japan", "kenya", "leeds", "lisbon", "liverpool", "london", "madrid", "manchester",
        "manhattan", "melbourne", "mexico", "miami", "milan", "montreal", "moscow", "mumbai", "munich", "nigeria",
        "norway", "ontario", "oregon", "oslo", "oxford", "paddington", "paris", "peru", "philadelphia", "poland",
        "portugal", "prague", "rome", "russia", "scotland", "seattle", "seoul", "shanghai", "singapore", "spain",
        "stockholm", "sweden", "switzerland", "sydney", "texas", "tokyo", "toronto", "ukraine", "vancouver", "venice",
        "vienna", "wales", "washington",
    });
    return set;
}

std::span<const std::string_view> longPlaces() {
    static constexpr auto rows = std::to_array<std::string_view>({
        "buenos aires", "costa rica", "el salvador", "estados unidos", "gran bretana", "los angeles", "new york",
        "new zealand", "nueva york", "nueva zelanda", "puerto rico", "reino unido", "san francisco", "san sebastian",
        "south africa", "south korea", "united kingdom", "united states",
    });
    return rows;
}

const WordSet& englishPeoples() {
    static const WordSet set({
        "african", "american", "asian", "australian", "british", "canadian", "catalan", "chinese", "dutch", "english",
        "european", "french", "german", "greek", "indian", "irish", "italian", "japanese", "korean", "latin", "mexican",
        "portuguese", "russian", "scottish", "spanish", "swedish", "turkish", "ukrainian", "welsh", "christmas",
        "easter",
    });
    return set;
}

const WordSet& abbreviations() {
    static const WordSet set({"api", "atm", "ceo", "cfo", "css", "csv", "cto", "cv", "diy", "dni", "dvd", "eta", "faq",
                              "fyi", "gps", "hdmi", "html", "http", "https", "iban", "irpf", "iva", "json", "kpi",
                              "nato", "nif", "ngo", "ong", "pdf", "pib", "ppt", "roi", "rrhh", "sdk", "seo",
                              "sms", "sql", "suv", "tv", "uk", "url", "usb", "vat", "vpn", "xml"});
    return set;
}

const WordSet& titles() {
    static const WordSet set({"senor", "senora", "senorita", "sr", "sra", "srta", "don", "dona", "doctor", "doctora",
                              "dr", "dra", "profesor", "profesora", "mr", "mrs", "ms", "miss", "professor", "prof"});
    return set;
}

const WordSet& offices() {
    static const WordSet set({"director", "directora", "presidente", "presidenta", "alcalde", "alcaldesa", "juez", "jueza",
                              "cliente", "clienta", "profesor", "profesora", "vecino", "vecina"});
    return set;
}

const WordSet& addressees() {
    static const WordSet set({"equipo", "todos", "todas", "chicos", "chicas", "companeros", "companeras", "familia",
                              "clientes", "amigos", "amigas", "colegas", "team", "all", "everyone", "everybody", "folks",
                              "guys", "there", "colleagues", "friends"});
    return set;
}
// clang-format on

}  // namespace dorix::service::names
