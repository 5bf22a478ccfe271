#include "Source/BuddyList/KibPeopleListItem.h"
#include "Source/BuddyList/KibNotifications.h"
#include "Source/BuddyList/KibPeopleListItemDelegate.h"
