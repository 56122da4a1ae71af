#include "UserInterface/Terminal/ZPKTerminalFrontEnd.h"
