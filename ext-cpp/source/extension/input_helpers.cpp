#include "input_helpers.h"
