// ItemGenerator: each item's words are picked by a 64-bit mix of its index (splitmix64's
// finaliser), which spreads neighbouring indexes over the lists; no state, so no order of calls
// matters. 97 first names, 103 surnames and 89 towns (primes, so that the picks do not move in
// step) give about ten thousand names and close to a million name-town pairs.
#include "ItemGenerator.h"

#include <array>
#include <cstdint>

namespace demo {
namespace {

constexpr std::array FirstNames = {
    u"Ada",      u"Agnes",   u"Åsa",     u"Alan",      u"Albert",    u"Amélie",   u"Anna",    u"Anton",   u"Astrid",
    u"Barbara",  u"Bernd",   u"Björn",   u"Brigitte",  u"Carla",     u"Carlos",   u"Cécile",  u"Charles", u"Chloé",
    u"Daniel",   u"Dörte",   u"Edith",   u"Elena",     u"Émile",     u"Erik",     u"Eva",     u"Fabian",  u"Frida",
    u"François", u"Georg",   u"Grace",   u"Greta",     u"Hannah",    u"Hans",     u"Hélène",  u"Henrik",  u"Ida",
    u"Ingrid",   u"Isabel",  u"Jakob",   u"Jan",       u"Jérôme",    u"Johanna",  u"José",    u"Józef",   u"Julia",
    u"Karin",    u"Karl",    u"Katherine", u"Klaus",   u"Lars",      u"Laura",    u"Léa",     u"Lena",    u"Lucía",
    u"Ludwig",   u"Łukasz",  u"Magnus",  u"Maria",     u"Marta",     u"Matthias", u"Maël",    u"Mia",     u"Mikael",
    u"Nadia",    u"Niklas",  u"Noémie",  u"Nora",      u"Olaf",      u"Olga",     u"Oskar",   u"Paul",    u"Pauline",
    u"Peter",    u"Petra",   u"Quentin", u"Rafael",    u"Renée",     u"Rita",     u"Robert",  u"Ruth",    u"Sara",
    u"Sebastian", u"Siân",   u"Sofia",   u"Søren",     u"Stefan",    u"Susanne",  u"Thomas",  u"Tomás",   u"Ulla",
    u"Ursula",   u"Valérie", u"Viktor",  u"Walter",    u"Wiebke",    u"Xavier",   u"Yvonne",
};

constexpr std::array Surnames = {
    u"Abbott",    u"Ackermann", u"Álvarez",   u"Andersson",  u"Babbage",  u"Bäcker",   u"Bauer",     u"Bernard",
    u"Bianchi",   u"Blanc",     u"Brandt",    u"Brown",      u"Carlsson", u"Castro",   u"Clarke",    u"Costa",
    u"Dąbrowski", u"Dubois",    u"Duval",     u"Eriksson",   u"Esposito", u"Faure",    u"Fernández", u"Fischer",
    u"Fontaine",  u"Françoise", u"Garcia",    u"Gómez",      u"Graf",     u"Gruber",   u"Hansen",    u"Hartmann",
    u"Hopper",    u"Huber",     u"Ibáñez",    u"Jansen",     u"Jensen",   u"Johansson", u"Jørgensen", u"Kaiser",
    u"Keller",    u"Klein",     u"Koch",      u"König",      u"Kowalski", u"Krüger",   u"Lambert",   u"Larsen",
    u"Laurent",   u"Lehmann",   u"Lindqvist", u"Lovelace",   u"López",    u"Martin",   u"Meier",     u"Mercier",
    u"Moreau",    u"Müller",    u"Neumann",   u"Nielsen",    u"Nowak",    u"Núñez",    u"O'Brien",   u"Olsen",
    u"Öztürk",    u"Pedersen",  u"Petit",     u"Quist",      u"Ramírez",  u"Richter",  u"Robert",    u"Romano",
    u"Roussel",   u"Ruiz",      u"Sánchez",   u"Schäfer",    u"Schmidt",  u"Schneider", u"Schröder", u"Schulz",
    u"Silva",     u"Šimek",     u"Smith",     u"Sørensen",   u"Svensson", u"Thomas",   u"Torres",    u"Turing",
    u"Vogel",     u"Wagner",    u"Walker",    u"Weber",      u"Wójcik",   u"Wolf",     u"Young",     u"Zając",
    u"Zimmermann", u"Žák",      u"Zöllner",   u"Zuber",      u"Ødegaard", u"Ångström", u"Émond",
};

constexpr std::array Towns = {
    u"Aachen",     u"Aalborg",     u"Ålesund",    u"Amsterdam",  u"Antwerpen",   u"Århus",       u"Arles",
    u"Augsburg",   u"Barcelona",   u"Basel",      u"Bergen",     u"Berlin",      u"Besançon",    u"Bilbao",
    u"Bologna",    u"Bordeaux",    u"Bremen",     u"Brno",       u"Brugge",      u"Bruxelles",   u"Caen",
    u"Cádiz",      u"Cambridge",   u"Cork",       u"Córdoba",    u"Dijon",       u"Dresden",     u"Dublin",
    u"Düsseldorf", u"Edinburgh",   u"Essen",      u"Faro",       u"Firenze",     u"Frankfurt",   u"Gdańsk",
    u"Genève",     u"Gent",        u"Göteborg",   u"Granada",    u"Graz",        u"Groningen",   u"Hamburg",
    u"Hannover",   u"Helsinki",    u"Innsbruck",  u"Jönköping",  u"Kassel",      u"Kiel",        u"København",
    u"Köln",       u"Košice",      u"Kraków",     u"Leeds",      u"Leipzig",     u"León",        u"Liège",
    u"Lille",      u"Linköping",   u"Lisboa",     u"Ljubljana",  u"Łódź",        u"London",      u"Lübeck",
    u"Luzern",     u"Lyon",        u"Málaga",     u"Malmö",      u"Manchester",  u"Marseille",   u"München",
    u"Münster",    u"Nantes",      u"Nürnberg",   u"Odense",     u"Oslo",        u"Oviedo",      u"Plzeň",
    u"Porto",      u"Poznań",      u"Reykjavík",  u"Rotterdam",  u"Salzburg",    u"Sevilla",     u"Tromsø",
    u"Utrecht",    u"València",    u"Wrocław",    u"Zaragoza",   u"Zürich",
};

static_assert(FirstNames.size() == 97 && Surnames.size() == 103 && Towns.size() == 89);

std::uint64_t Mix(std::uint64_t x)
{
    x += 0x9E3779B97F4A7C15ull;
    x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9ull;
    x = (x ^ (x >> 27)) * 0x94D049BB133111EBull;
    return x ^ (x >> 31);
}

template <std::size_t N>
QString Pick(const std::array<const char16_t*, N>& words, std::uint64_t bits)
{
    return QString::fromUtf16(words[bits % N]);
}

}  // namespace

Item MakeItem(int index)
{
    const std::uint64_t bits = Mix(static_cast<std::uint64_t>(index));
    return Item{QStringLiteral("K%1").arg(index + 1, 7, 10, QLatin1Char('0')),
                Pick(FirstNames, bits) + QLatin1Char(' ') + Pick(Surnames, bits >> 21),
                Pick(Towns, bits >> 42)};
}

}  // namespace demo
