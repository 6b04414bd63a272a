#pragma once
#include "app/IGPIO.h"
#include "app/IUARTController.h"
#include "app/ModuleConfigure.h"
#include "app/VideoResolution.h"
#include "core/ISensorController.h"
#include "platform/SafePointer.h"

// The library's entry object: the application hands it the serial port and
// the GPIO, calls init once, and then reaches the controller through it.
//
// The factory builds the controller from the module id (88: the fisheye board,
// anything else: the null controller). An application whose front end is a
// controller the factory does not build (a serial camera module, the module
// without sensor UI) constructs it itself and hands it over with
// setSensorController before init; init then brings up that controller
// instead of asking the factory, with the same steps (README, "Running a
// controller of your own").
class SensorControllerManager {
public:
    SensorControllerManager();
    ~SensorControllerManager();

    void setUARTController(const SafePointer<IUARTController>& uart);
    void setGPIO(const SafePointer<IGPIO>& gpio);
    // A controller that the application constructed itself, run by the next init
    // (whatever the module id). Throws "Assigned NULL <T>pointer" for an empty one.
    void setSensorController(const SafePointer<ISensorController>& controller);
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
    // The controller handed in by setSensorController, until init takes it.
    SafePointer<ISensorController> m_pOwnController;
};
