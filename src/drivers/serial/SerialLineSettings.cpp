#include "drivers/serial/SerialLineSettings.h"

#include <cstdio>
#include <cstdlib>

#include "app/ModuleConfigure.h"
#include "platform/KSLogger.h"
#include "platform/ModuleParameterParser.h"

void SerialLineSettings::readInfrared(const ModuleConfigure& cfg, int& value) {
    ModuleParameterParser objDetail;
    if (!objDetail.parse(cfg.getDetail())) return;
    std::string strInfrared;
    if (objDetail.getValue("isInfrared", strInfrared))
        value = static_cast<int>(std::strtol(strInfrared.c_str(), nullptr, 10));
    else
        KSLogger::consolePuts("get isInfrared from detail failed");
}

bool SerialLineSettings::read(const ModuleConfigure& cfg) {
    ModuleParameterParser objDetail;
    if (!objDetail.parse(cfg.getDetail())) {
        KSLogger::consolePuts("parse detail failed");
        return false;
    }
    if (!objDetail.getValue(key, device) || device.empty()) {
        KSLogger::consolePuts(missingDeviceText);
        return false;
    }
    ModuleParameterParser objParameters;
    if (!objParameters.parse(cfg.getParameters())) {
        KSLogger::consolePuts("parse senseParameter failed");
        return false;
    }
    std::string strLine;
    if (!objParameters.getValue(key, strLine)) {
        KSLogger::consolePuts(missingLineText);
        return false;
    }
    int v[4] = {0, 0, 0, 0};
    int nRet = std::sscanf(strLine.c_str(), "%d,%d,%d,%d", &v[0], &v[1], &v[2], &v[3]);
    if (nRet < 4) {
        KSLogger::consolePrintf("parse %s param failed,nRet=%d\n", key, nRet < 0 ? 0 : nRet);
        return false;
    }
    for (int i = 0; i < 4; ++i) value[i] = v[i];
    KSLogger::consolePrintf("%s(%s) param is (%d,%d,%d,%d)\n", key, device.c_str(), v[0], v[1], v[2], v[3]);
    return true;
}
