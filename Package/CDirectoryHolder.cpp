#include "Package/CDirectoryHolder.h"
