#include "Platform/Foundation/PropertyList.h"
