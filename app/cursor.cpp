#include "app/cursor.h"

bool gCursorHidden = false;
