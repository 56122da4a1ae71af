#include "Common/CStringUtil.h"

namespace varno_zpk {

void CStringUtil::SetUTF8StringToUstring(const char* str, std::string& out) {
    out.assign(str);
}

}  // namespace varno_zpk
