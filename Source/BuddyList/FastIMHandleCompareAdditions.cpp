#include "Source/BuddyList/FastIMHandleCompareAdditions.h"
