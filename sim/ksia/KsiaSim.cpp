// The ISP driver library symbols of host builds, backed by SimIsp.
#include "drivers/fisheye/KsiaDriver.h"
#include "ksia/SimIsp.h"

extern "C" int ksia_preinit(struct KsiaPreinitInfo* p_pInfo) {
    return SimIsp::instance().preinit(p_pInfo);
}

extern "C" int ksia_ioctrl(int p_nCommand, int p_nDirection, int* p_pValue) {
    return SimIsp::instance().ioctrl(p_nCommand, p_nDirection, p_pValue);
}
