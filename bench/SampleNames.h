#pragma once

#include <string>
#include <vector>

namespace kibbench {

// Names for generated people: mostly plain ASCII, some with accents, a few in
// full-width letters, so folding and collation do real work.
inline const std::vector<std::string>& sampleFirstNames() {
  static const std::vector<std::string> names{"Alex", "Renée", "Jürgen", "Zoë",   "Maria", "John", "Ｓａｍ", "Chloé",
                                              "Anna", "Björn", "Kate",   "Luis",  "Ｍｉｋａ", "Søren", "Paul", "Nina"};
  return names;
}

inline const std::vector<std::string>& sampleLastNames() {
  static const std::vector<std::string> names{"Smith", "Müller",   "García", "Lee",  "Novák", "Brown",    "Dubois", "Ito",
                                              "Olsen", "Kowalski", "Núñez",  "Chen", "Rossi", "Ångström", "Park",   "Khan"};
  return names;
}

}  // namespace kibbench
