#pragma once
#include "app/IGPIO.h"
#include "app/IUARTController.h"
#include "app/ModuleConfigure.h"
#include "app/VideoResolution.h"
#include "core/ISensorController.h"
#include "platform/SafePointer.h"

// The library's entry object: the application hands it the serial port and
// the GPIO, calls init once, and then reaches the controller through it.
class SensorControllerManager {
public:
    SensorControllerManager();
    ~SensorControllerManager();

    void setUARTController(const SafePointer<IUARTController>& uart);
    void setGPIO(const SafePointer<IGPIO>& gpio);
    void init(int sensorType, const VideoResolution& res, const ModuleConfigure& cfg);
    SafePointer<ISensorController> getSensorController();
    int getMirrorValue(int& value);
    int getStillImageValue(int& value);
    int updateSensorVideoSystem(int sensorType, const VideoResolution& res);

private:
    // Stops the controller's worker and lets go of the controller.
    void releaseController();

    SafePointer<IUARTController> m_pUARTController;
    SafePointer<IGPIO> m_pGPIO;
    SafePointer<ISensorController> m_pSensorController;
};
