#pragma once

namespace platform {

// Clears the whole messaging world: the service list and the shared account
// controller, daemon controller (backend, listeners, request observers),
// service agent and handle registrar are replaced by fresh, empty ones.
// Tests call it before and after each case; a backend calls it before it
// builds its world.
void IMResetMessagingWorld();

}  // namespace platform
