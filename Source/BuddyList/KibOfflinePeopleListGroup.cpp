#include "Source/BuddyList/KibOfflinePeopleListGroup.h"
