#include "Source/BuddyList/KibPeopleListGroup.h"
