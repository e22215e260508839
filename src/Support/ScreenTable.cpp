#include "Support/ScreenTable.h"
