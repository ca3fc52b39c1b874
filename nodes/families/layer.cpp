#include "nodes/family.h"

NEMRA_FAMILY_BINDER(layer)
