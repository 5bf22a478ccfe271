#include "Source/BuddyList/KibBuddyListPresence.h"
