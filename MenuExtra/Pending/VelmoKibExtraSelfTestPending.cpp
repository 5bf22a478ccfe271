// Placeholder definition while VelmoKibExtraSelfTest.cpp is being written; the
// build drops this file as soon as that one exists. Nothing here is the real
// behaviour.
#include "MenuExtra/VelmoKibExtra.h"

using namespace platform;

void VelmoKibExtra::execMenuItemWithTitle(const ObjectPtr&) {}
