#include "core/SenseControllerFactory.h"

#include <cstdio>

#include "core/NullSenseController.h"
#include "drivers/fisheye/S2FisheyeSenseController.h"
#include "platform/GlobalEnv.h"
#include "platform/KSLogger.h"

SafePointer<ISensorController> SenseControllerFactory::create(int type) {
    if (GlobalEnv::getInstance()->getPrintFlag()) KSLogger::consolePrintf("SenseController: SensorType = %d\n", type);
    if (type == S2FisheyeSenseController::SensorType)
        return SafePointer<ISensorController>(new S2FisheyeSenseController());
    return SafePointer<ISensorController>(new NullSenseController());
}
