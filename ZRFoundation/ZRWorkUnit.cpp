#include "ZRFoundation/ZRWorkUnit.h"
