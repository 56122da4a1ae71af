#include "Platform/ZPKTask.h"

ZPKTask::~ZPKTask() = default;
