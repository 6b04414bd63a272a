#pragma once
// A controller whose driver does nothing, for measuring the library's own cost:
// `count` common ids (1 upwards, leaving out the scheme window ids 500-504 that the
// base registers), every read gives the id, every write succeeds, day/night reads
// day. Its serial port and GPIO lines are the idle devices.
#include <vector>

#include "IdleDevices.h"
#include "app/ModuleConfigure.h"
#include "app/VideoResolution.h"
#include "core/ISensorController.h"
#include "platform/SafePointer.h"
#include "storage/IdManager.h"

class IdleController : public ISensorController {
public:
    // The first `count` ids as described above.
    static std::vector<int> idsOf(int count) {
        std::vector<int> ids;
        for (int id = 1; static_cast<int>(ids.size()) < count; ++id)
            if (id < 500 || id > 504) ids.push_back(id);
        return ids;
    }

    explicit IdleController(int count = 60) : ISensorController(50) {
        for (int id : idsOf(count)) m_pIdManager->addParameterId(IdManager::TypeCommon, id);
        static SafePointer<IUARTController> s_uart(new IdleUART());
        static SafePointer<IGPIO> s_gpio(new IdleGPIO());
        setOperator(s_uart, s_gpio);
    }
    ~IdleController() override { stopWorker(); }
    int getMirrorValue(int& v) override {
        v = 0;
        return 1;
    }
    int getParameterFromSensor(int id, int& value) override {
        if (id >= 500 && id <= 504) return ISensorController::getParameterFromSensor(id, value);
        value = id;
        return 1;
    }
    int setParameterToSensor(int id, int value) override {
        if (id >= 500 && id <= 504) return ISensorController::setParameterToSensor(id, value);
        return 1;
    }
    int setSensorVideoSystem(int, const VideoResolution&) override { return 1; }
    int initController(int, const ModuleConfigure&) override {
        setSensorConfigVersion(0);
        setSensorConfigVersion2(3);
        return 1;
    }
    int getDNStatusFromSensor(int& status) override {
        status = 1;
        return 1;
    }
    int getCurrentGain(int& gain) override {
        gain = 20;
        return 1;
    }
};
