#include "core/SensorTypeFactory.h"

#include "core/NullSenseController.h"
#include "core/SensorTypes.h"
#include "drivers/fisheye/S2FisheyeSenseController.h"
#include "drivers/ispboard/IIPC368ZoomSensorController.h"
#include "drivers/ispboard/IT1SenseController.h"
#include "drivers/ispboard/IT1ZoomModuleSenseController.h"
#include "drivers/ispboard/ITNSenseController.h"
#include "drivers/ispboard/KestraISPSenseController.h"
#include "drivers/ispboard/SeawolfSenseController.h"
#include "drivers/serial/CMD7200SenseController.h"
#include "drivers/serial/CMD7300SenseController.h"
#include "drivers/serial/CMD8100SenseController.h"
#include "drivers/serial/CMD8100_OldSenseController.h"
#include "drivers/serial/CMD8300SenseController.h"
#include "drivers/serial/EffioSenseController.h"
#include "drivers/serial/FCBEV7310SenseController.h"
#include "drivers/serial/HitachCompatSenseController.h"
#include "drivers/serial/HitachSenseController.h"
#include "drivers/serial/NoSensorUIController.h"
#include "drivers/serial/SC110N_CSenseController.h"
#include "drivers/serial/SONYCH3310SenseController.h"
#include "drivers/serial/SONYCV7500SenseController.h"
#include "drivers/serial/SONYEH4300SenseController.h"

namespace {
ISensorController* build(int type) {
    switch (type) {
        case SensorTypes::FCBEV7310: return new FCBEV7310SenseController();
        case SensorTypes::SONYEH4300: return new SONYEH4300SenseController();
        case SensorTypes::SONYCV7500: return new SONYCV7500SenseController();
        case SensorTypes::SONYCH3310: return new SONYCH3310SenseController();
        case SensorTypes::CMD8100: return new CMD8100SenseController();
        case SensorTypes::CMD8100_Old: return new CMD8100_OldSenseController();
        case SensorTypes::CMD7300: return new CMD7300SenseController();
        case SensorTypes::CMD8300: return new CMD8300SenseController();
        case SensorTypes::Hitach: return new HitachSenseController();
        case SensorTypes::HitachCompat: return new HitachCompatSenseController();
        case SensorTypes::SC110N_C: return new SC110N_CSenseController();
        case SensorTypes::CMD7200: return new CMD7200SenseController();
        case SensorTypes::Effio: return new EffioSenseController();
        case SensorTypes::ITN: return new ITNSenseController();
        case SensorTypes::Seawolf: return new SeawolfSenseController();
        case SensorTypes::S2Fisheye: return new S2FisheyeSenseController();
        case SensorTypes::IT1: return new IT1SenseController();
        case SensorTypes::IT1ZoomModule: return new IT1ZoomModuleSenseController();
        case SensorTypes::KestraISP: return new KestraISPSenseController();
        case SensorTypes::IIPC368Zoom: return new IIPC368ZoomSensorController();
        case SensorTypes::NoSensorUI: return new NoSensorUIController();
        default: return new NullSenseController();
    }
}
}  // namespace

SafePointer<ISensorController> SensorTypeFactory::create(int type) { return SafePointer<ISensorController>(build(type)); }
