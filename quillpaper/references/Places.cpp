#include "quillpaper/references/Places.h"

#include <string>
#include <unordered_map>

#include "strings/StringUtility.h"

namespace quillpaper {

namespace {

const std::unordered_map<std::string, PlaceKind>& knownPlaces() {
  static const std::unordered_map<std::string, PlaceKind> kPlaces = [] {
    std::unordered_map<std::string, PlaceKind> map;
    const auto add = [&](PlaceKind kind, std::initializer_list<const char*> names) {
      for (const char* name : names) map.emplace(name, kind);
    };
    // Cities with publishers, the world over, in the forms lists give them.
    add(PlaceKind::City,
        {"new york", "new york city", "london", "oxford", "cambridge", "boston", "chicago", "philadelphia",
         "washington", "san francisco", "los angeles", "san diego", "seattle", "baltimore",
         "princeton", "new haven", "ithaca", "berkeley", "stanford", "palo alto", "menlo park", "redwood city",
         "mountain view", "sebastopol", "reading", "upper saddle river", "englewood cliffs", "hillsdale", "mahwah",
         "thousand oaks", "newbury park", "beverly hills", "hoboken", "piscataway", "norwood", "westport",
         "greenwich", "hartford", "providence", "amherst", "worcester", "cleveland", "columbus", "cincinnati",
         "detroit", "ann arbor", "minneapolis", "st. paul", "saint paul", "madison", "milwaukee", "urbana",
         "champaign", "bloomington", "indianapolis", "st. louis", "saint louis", "kansas city", "lawrence",
         "lincoln", "denver", "boulder", "salt lake city", "phoenix", "tucson", "albuquerque", "austin", "dallas",
         "houston", "san antonio", "atlanta", "nashville", "durham", "chapel hill", "raleigh", "richmond",
         "charlottesville", "pittsburgh", "rochester", "buffalo", "syracuse", "albany", "miami", "orlando",
         "tampa", "new orleans", "baton rouge", "portland", "sacramento", "oakland", "san jose", "honolulu",
         "anchorage", "dubuque", "belmont", "lexington", "armonk", "redmond", "cupertino", "toronto", "montreal",
         "montréal", "ottawa", "vancouver", "quebec", "québec", "calgary", "edmonton", "winnipeg", "halifax",
         "mexico city", "méxico", "buenos aires", "são paulo", "sao paulo", "rio de janeiro", "santiago",
         "bogotá", "bogota", "lima", "caracas", "havana", "edinburgh", "glasgow", "manchester", "birmingham",
         "bristol", "leeds", "liverpool", "sheffield", "nottingham", "brighton", "harlow", "harmondsworth",
         "basingstoke", "abingdon", "chichester", "aldershot", "farnham", "milton keynes", "cardiff", "belfast",
         "dublin", "cork", "paris", "lyon", "marseille", "toulouse", "bordeaux", "strasbourg", "grenoble",
         "berlin", "munich", "münchen", "hamburg", "frankfurt", "frankfurt am main", "cologne", "köln",
         "stuttgart", "heidelberg", "leipzig", "dresden", "göttingen", "bonn", "düsseldorf", "darmstadt",
         "mainz", "tübingen", "freiburg", "weinheim", "wiesbaden", "hannover", "hanover", "bielefeld",
         "vienna", "wien", "graz", "innsbruck", "salzburg", "zurich", "zürich", "basel", "bern", "berne",
         "geneva", "genève", "lausanne", "amsterdam", "rotterdam", "utrecht", "leiden", "the hague",
         "den haag", "dordrecht", "groningen", "nijmegen", "delft", "eindhoven", "brussels", "bruxelles",
         "antwerp", "leuven", "ghent", "luxembourg", "copenhagen", "københavn", "aarhus", "stockholm",
         "uppsala", "lund", "gothenburg", "göteborg", "oslo", "bergen", "helsinki", "espoo", "tampere",
         "reykjavik", "madrid", "barcelona", "valencia", "seville", "sevilla", "salamanca", "lisbon", "lisboa",
         "porto", "coimbra", "rome", "roma", "milan", "milano", "turin", "torino", "florence", "firenze",
         "bologna", "naples", "napoli", "venice", "venezia", "padua", "padova", "pisa", "athens", "thessaloniki",
         "istanbul", "ankara", "warsaw", "warszawa", "kraków", "krakow", "prague", "praha", "brno", "budapest",
         "bratislava", "ljubljana", "zagreb", "belgrade", "bucharest", "sofia", "moscow", "saint petersburg",
         "st. petersburg", "kiev", "kyiv", "riga", "tallinn", "vilnius", "minsk", "tel aviv", "jerusalem",
         "haifa", "cairo", "beirut", "dubai", "tehran", "riyadh", "delhi", "new delhi", "mumbai", "bombay",
         "kolkata", "calcutta", "chennai", "madras", "bangalore", "bengaluru", "hyderabad", "karachi",
         "lahore", "dhaka", "colombo", "beijing", "shanghai", "hong kong", "guangzhou", "shenzhen", "nanjing",
         "wuhan", "taipei", "tokyo", "kyoto", "osaka", "yokohama", "seoul", "busan", "singapore",
         "kuala lumpur", "bangkok", "jakarta", "manila", "hanoi", "sydney", "melbourne", "brisbane", "perth",
         "adelaide", "canberra", "auckland", "wellington", "christchurch", "johannesburg", "cape town",
         "pretoria", "durban", "nairobi", "lagos", "accra", "addis ababa"});
    // Regions: states, provinces and countries, and their postal abbreviations.
    add(PlaceKind::Region,
        {"al", "ak", "az", "ar", "ca", "co", "ct", "de", "dc", "d.c.", "fl", "ga", "hi", "id", "il", "in", "ia",
         "ks", "ky", "la", "me", "md", "ma", "mi", "mn", "ms", "mo", "mt", "ne", "nv", "nh", "nj", "nm", "ny",
         "nc", "nd", "oh", "ok", "or", "pa", "ri", "sc", "sd", "tn", "tx", "ut", "vt", "va", "wa", "wv", "wi",
         "wy", "alabama", "alaska", "arizona", "arkansas", "california", "colorado", "connecticut", "delaware",
         "florida", "georgia", "hawaii", "idaho", "illinois", "indiana", "iowa", "kansas", "kentucky",
         "louisiana", "maine", "maryland", "massachusetts", "michigan", "minnesota", "mississippi", "missouri",
         "montana", "nebraska", "nevada", "new hampshire", "new jersey", "new mexico", "north carolina",
         "north dakota", "ohio", "oklahoma", "oregon", "pennsylvania", "rhode island", "south carolina",
         "south dakota", "tennessee", "texas", "utah", "vermont", "virginia", "west virginia", "wisconsin",
         "wyoming", "calif.", "mass.", "conn.", "penn.", "ill.", "mich.", "minn.", "wis.", "n.y.", "n.j.",
         "on", "qc", "bc", "ab", "ontario", "quebec province", "british columbia", "alberta", "nova scotia",
         "manitoba", "usa", "u.s.a.", "us", "u.s.", "united states", "united states of america", "uk", "u.k.",
         "united kingdom", "england", "scotland", "wales", "northern ireland", "ireland", "canada", "mexico",
         "brazil", "argentina", "chile", "colombia", "peru", "france", "germany", "west germany",
         "east germany", "deutschland", "austria", "switzerland", "the netherlands", "netherlands", "holland",
         "belgium", "denmark", "sweden", "norway", "finland", "iceland", "spain", "españa", "portugal", "italy",
         "italia", "greece", "turkey", "poland", "czech republic", "czechia", "slovakia", "hungary", "romania",
         "bulgaria", "russia", "ukraine", "israel", "egypt", "india", "pakistan", "china", "p.r. china",
         "taiwan", "japan", "korea", "south korea", "thailand", "malaysia", "indonesia", "philippines",
         "vietnam", "australia", "new zealand", "south africa", "kenya", "nigeria"});
    return map;
  }();
  return kPlaces;
}

}  // namespace

PlaceKind placeKind(std::string_view piece) {
  const QuillStrings::StringUtility& str = QuillStrings::strings();
  std::string name = str.lower(str.trimmed(piece));
  // A postcode after a state's abbreviation ("NJ 07458", "MA 02139") says nothing more.
  if (const size_t space = name.rfind(' '); space != std::string::npos &&
                                            name.find_first_not_of("0123456789-", space + 1) == std::string::npos)
    name = str.trimmed(name.substr(0, space));
  const auto it = knownPlaces().find(name);
  return it == knownPlaces().end() ? PlaceKind::Unknown : it->second;
}

}  // namespace quillpaper
