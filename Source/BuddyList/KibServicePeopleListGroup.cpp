#include "Source/BuddyList/KibServicePeopleListGroup.h"
