// Placeholder definitions while VelmoKibExtraScreenSharing.cpp is being
// written; the build drops this file as soon as that one exists. Nothing here
// is the real behaviour: screen-sharing notices are ignored.
#include "MenuExtra/VelmoKibExtra.h"

using namespace platform;

void VelmoKibExtra::screenSharingStarted(const ObjectPtr&) {}
void VelmoKibExtra::screenSharingEnded(const ObjectPtr&) {}
void VelmoKibExtra::screenSharingPulse(const ObjectPtr&) {}
void VelmoKibExtra::applicationDidTerminate(const ObjectPtr&) {}
void VelmoKibExtra::endScreenSharing(const ObjectPtr&) {}
void VelmoKibExtra::_appendScreenSharingControls(const MenuPtr&) {}
