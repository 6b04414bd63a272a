#include "isp/EE.h"

EE::EE() = default;

EE::~EE() = default;

bool EE::setEE(int p_nLevel) {
    (void)p_nLevel;
    return true;
}
