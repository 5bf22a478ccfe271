// Placeholder definitions while VelmoKibExtraBuddies.cpp is being written; the
// build drops this file as soon as that one exists. Nothing here is the real
// behaviour: the buddies section stays empty and the people model is not fed.
#include "MenuExtra/VelmoKibExtra.h"

using namespace platform;

void VelmoKibExtra::_rebuildPeopleCollection() {}
void VelmoKibExtra::_rebuildPeopleList() {}
void VelmoKibExtra::_appendBuddies(const MenuPtr&) {}
void VelmoKibExtra::messagePerson(const ObjectPtr&) {}
void VelmoKibExtra::textMessagePerson(const ObjectPtr&) {}
