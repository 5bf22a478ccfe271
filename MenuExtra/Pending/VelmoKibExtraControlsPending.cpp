// Placeholder definitions while VelmoKibExtraControls.cpp is being written; the
// build drops this file as soon as that one exists. Nothing here is the real
// behaviour: no service is ever chosen and the controls section stays empty.
#include "MenuExtra/VelmoKibExtra.h"

using namespace platform;

void VelmoKibExtra::_appendControls(const MenuPtr&) {}
void VelmoKibExtra::_appendOpenParlo(const MenuPtr&) {}
void VelmoKibExtra::switchService(const ObjectPtr&) {}
void VelmoKibExtra::openBuddyList(const ObjectPtr&) {}
IMServicePtr VelmoKibExtra::defaultService() { return nullptr; }
