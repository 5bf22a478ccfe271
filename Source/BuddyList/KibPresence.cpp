#include "Source/BuddyList/KibPresence.h"
