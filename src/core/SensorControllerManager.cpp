#include "core/SensorControllerManager.h"

#include <cstdio>

#include "core/SenseControllerFactory.h"
#include "platform/GlobalEnv.h"
#include "platform/KSLogger.h"

namespace {
bool printOn() { return GlobalEnv::getInstance()->getPrintFlag(); }
}  // namespace

SensorControllerManager::SensorControllerManager() = default;

SensorControllerManager::~SensorControllerManager() {
    m_pOwnController.reset();
    releaseController();
    m_pGPIO.reset();
    m_pUARTController.reset();
}

void SensorControllerManager::setUARTController(const SafePointer<IUARTController>& uart) { m_pUARTController = uart; }

void SensorControllerManager::setGPIO(const SafePointer<IGPIO>& gpio) { m_pGPIO = gpio; }

void SensorControllerManager::setSensorController(const SafePointer<ISensorController>& controller) {
    m_pOwnController = controller;
}

void SensorControllerManager::releaseController() {
    if (!m_pSensorController.isNull()) m_pSensorController->stopWorker();
    m_pSensorController.reset();
}

void SensorControllerManager::init(int sensorType, const VideoResolution& res, const ModuleConfigure& cfg) {
    int moduleId = cfg.getModuleId();
    releaseController();  // a second init replaces the controller of the first
    if (!m_pOwnController.isNull()) {
        // The application's own controller: brought up whatever the module id.
        m_pSensorController = m_pOwnController;
        m_pOwnController.reset();
    } else {
        m_pSensorController = SenseControllerFactory::create(moduleId);
        if (moduleId == 0) return;
    }
    m_pSensorController->setOperator(m_pUARTController, m_pGPIO);
    if (!m_pSensorController->init(sensorType, cfg, res)) {
        if (printOn()) KSLogger::consolePuts("SensorControllerManager::initController error");
        return;
    }
    if (m_pGPIO.isNull()) return;
    if (m_pGPIO->notifySensorReady() && printOn()) KSLogger::consolePuts("!!!!!!!!!!!!!!!!!!SensorControllerManager::init successs");
}

SafePointer<ISensorController> SensorControllerManager::getSensorController() {
    // Copying an empty safe pointer is a misuse; before init the caller gets a fresh empty one.
    if (m_pSensorController.isNull()) return SafePointer<ISensorController>();
    return m_pSensorController;
}

int SensorControllerManager::getMirrorValue(int& value) {
    if (m_pSensorController.isNull()) {
        if (printOn()) KSLogger::consolePuts("SensorControllerManager::getMirrorValue:m_pSensorController is NULL");
        return 0;
    }
    return m_pSensorController->getMirrorValue(value);
}

int SensorControllerManager::getStillImageValue(int& value) {
    if (m_pSensorController.isNull()) {
        if (printOn()) KSLogger::consolePuts("SensorControllerManager::getStillImageValue:m_pSensorController is NULL");
        return 0;
    }
    return m_pSensorController->getStillImageValue(value);
}

int SensorControllerManager::updateSensorVideoSystem(int sensorType, const VideoResolution& res) {
    // With no controller the safe pointer reports "Use NULL pointer ->".
    return m_pSensorController->updateSensorVideoSystem(sensorType, res);
}
