#include "sim/Scenario.h"

namespace sim {

const ScenarioAccount* Scenario::accountWithID(const std::string& id) const {
  for (const auto& account : accounts)
    if (account.id == id) return &account;
  return nullptr;
}

const ScenarioService* Scenario::serviceNamed(const std::string& name) const {
  for (const auto& service : services)
    if (service.name == name) return &service;
  return nullptr;
}

}  // namespace sim
