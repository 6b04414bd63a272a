#pragma once
#include <memory>
#include <string>

#include "core/SensorTypes.h"
#include "core/ISensorController.h"

class AdcReader;

// Controller of the S2 fisheye ISP board (module id 88, sensor type 88).
//
// Each image parameter id maps onto one command of the board's ISP driver
// library (drivers/fisheye/KsiaDriver.h), range-checked before the call; the
// shared machinery (caches, files, schemes, day/night worker, GPIO) stays in
// ISensorController. Day/night comes from the ISP's scene level, or, on a
// board with an infrared light, from the light sensor on the ADC.
class S2FisheyeSenseController : public ISensorController {
public:
    enum {
        SensorType = SensorTypes::S2Fisheye,
        ConfigVersion = 0,
        ConfigVersion2 = 3,
        LastParameterId = 56,
        AdcFullScale = 1714,
        // Fixed answers of the infrared threshold getters (ids 32 and 33).
        InfraredDTNReading = 70,
        InfraredNTDReading = 30
    };

    S2FisheyeSenseController();
    ~S2FisheyeSenseController() override;

    // ---- overridden operations, in slot order ----
    int updateSensorVideoSystem(int videoSystem, const VideoResolution& res) override;
    int getMirrorValue(int& value) override;
    int getParameterFromSensor(int id, int& value) override;
    int setParameterToSensor(int id, int value) override;
    int setSensorVideoSystem(int videoSystem, const VideoResolution& res) override;
    int getDNStatusFromSensor(int& status) override;
    int getDNStatusFromLDR(int& status) override;
    int turnPictureToDay() override;
    int turnPictureToNight() override;
    int initController(int sensorType, const ModuleConfigure& cfg) override;
    int initFactorySetting() override;

    // Turns an ISP command result into the operation's result: 1 for 0, else
    // reports the code on the error output and gives 0.
    int CheckKSEWFIResult(int p_nCode, const char* p_szFunction, int p_nLine);

    // ---- picture ----
    int setBrightness(int p_nValue);
    int getBrightness(int& p_nValue);
    int setSaturation(int p_nValue);
    int getSaturation(int& p_nValue);
    int setContrast(int p_nValue);
    int getContrast(int& p_nValue);
    int setSharpness(int p_nValue);
    int getSharpness(int& p_nValue);

    // ---- exposure ----
    int setShutterMode(int p_nValue);
    int getShutterMode(int& p_nValue);
    int setMaxShutter(int p_nValue);
    int getMaxShutter(int& p_nValue);
    int setFixShutter(int p_nValue);
    int getFixShutter(int& p_nValue);
    int setGainMode(int p_nValue);
    int getGainMode(int& p_nValue);
    int setMaxGain(int p_nValue);
    int getMaxGain(int& p_nValue);
    int setFixGain(int p_nValue);
    int getFixGain(int& p_nValue);
    int setIrisMode(int p_nValue);
    int getIrisMode(int& p_nValue);
    int setIrisSpeed(int p_nValue);
    int getIrisSpeed(int& p_nValue);
    int setRoomInnerOrOutMode(int p_nValue);
    int getRoomInnerOrOutMode(int& p_nValue);
    int setWDRMode(int p_nValue);
    int getWDRMode(int& p_nValue);
    int setWDRContrast(int p_nValue);
    int getWDRContrast(int& p_nValue);
    int setPhotometry(int p_nValue);
    int getPhotometry(int& p_nValue);
    int setHLCMode(int p_nValue);
    int getHLCMode(int& p_nValue);
    int setHLCContrast(int p_nValue);
    int getHLCContrast(int& p_nValue);
    int setBLCMode(int p_nValue);
    // Reads the BLC mode and then turns the picture to day (kept on purpose).
    int getBLCMode(int& p_nValue);

    // ---- day/night thresholds ----
    int setDTNThreshold(int p_nValue);
    int getDTNThreshold(int& p_nValue);
    int setNTDThreshold(int p_nValue);
    int getNTDThreshold(int& p_nValue);
    int setInfraredDTNThreshold(int p_nValue);
    int getInfraredDTNThreshold(int& p_nValue);
    int setInfraredNTDThreshold(int p_nValue);
    int getInfraredNTDThreshold(int& p_nValue);
    int setSmartInfraredMode(int p_nValue);
    int getSmartInfraredMode(int& p_nValue);
    int setInfraredManualValue(int p_nValue);
    int getInfraredManualValue(int& p_nValue);

    // ---- fisheye mounting ----
    int setMirror(int p_nValue);
    int getMirror(int& p_nValue);
    int setBeAwayMode(int p_nValue);
    int getBeAwayMode(int& p_nValue);

    // ---- noise reduction, defog, anti-shake ----
    int setNR2DMode(int p_nValue);
    int getNR2DMode(int& p_nValue);
    int setNR2DMaxContrast(int p_nValue);
    int getNR2DMaxContrast(int& p_nValue);
    int setNR2DFixContrast(int p_nValue);
    int getNR2DFixContrast(int& p_nValue);
    int setNR3DMode(int p_nValue);
    int getNR3DMode(int& p_nValue);
    int setNR3DMaxContrast(int p_nValue);
    int getNR3DMaxContrast(int& p_nValue);
    int setNR3DFixContrast(int p_nValue);
    int getNR3DFixContrast(int& p_nValue);
    int setDeFog(int p_nValue);
    int getDeFog(int& p_nValue);
    int setDeFogStrength(int p_nValue);
    int getDeFogStrength(int& p_nValue);
    int setAntiShake(int p_nValue);
    int getAntiShake(int& p_nValue);

    // ---- zoom and focus ----
    int setZoomMoveInterval(int p_nValue);
    int getZoomMoveInterval(int& p_nValue);
    int setFocusMoveInterval(int p_nValue);
    int getFocusMoveInterval(int& p_nValue);
    int ZoomWideSlow();
    int ZoomTeleSlow();
    int ZoomWideFast();
    int ZoomTeleFast();
    int FocusFarSlow();
    int FocusNearSlow();
    int FocusFarFast();
    int FocusNearFast();
    int runAutoFocus();
    int ResetAll();

    // ---- state read at start-up or remembered ----
    int getAutoIris() const { return m_nAutoIris; }
    const std::string& getAutoFocusDetail() const { return m_strAutoFocus; }
    const std::string& getManualFocusDetail() const { return m_strManualFocus; }
    const std::string& getFisheyeDetail() const { return m_strFisheye; }
    int getStoredInfraredDTNThreshold() const { return m_nInfraredDTNThreshold; }
    int getStoredInfraredNTDThreshold() const { return m_nInfraredNTDThreshold; }
    int getLastLDRStatus() const { return m_nLastLDRStatus; }
    int getRememberedSmartInfraredMode() const { return m_nSmartInfraredMode; }
    int getRememberedInfraredManualValue() const { return m_nInfraredManualValue; }
    bool isAdcOpen() const;

protected:
    // One ISP command, its result passed through CheckKSEWFIResult.
    int sendSet(int p_nCommand, int p_nValue, const char* p_szFunction, int p_nLine);
    int sendGet(int p_nCommand, int& p_nValue, const char* p_szFunction, int p_nLine);
    // A command whose result is deliberately not looked at.
    void sendSetUnchecked(int p_nCommand, int p_nValue);
    void sendGetUnchecked(int p_nCommand, int& p_nValue);
    // The 0-100 check of the percentage values; prints the refusal.
    bool isAppointRange(int p_nValue, const char* p_szFunction, int p_nLine);
    // True when 0 <= value <= max, compared unsigned so that a negative value fails.
    static bool isWithin(int p_nValue, unsigned int p_nMax) {
        return static_cast<unsigned int>(p_nValue) <= p_nMax;
    }

private:
    int m_nInfraredDTNThreshold = 0;
    int m_nInfraredNTDThreshold = 0;
    int m_nLastLDRStatus = 1;
    int m_nAutoIris = 0;
    int m_nSmartInfraredMode = 0;
    int m_nInfraredManualValue = 0;
    int m_nFocusMoveInterval = 0;
    std::string m_strAutoFocus;
    std::string m_strManualFocus;
    std::string m_strFisheye;
    std::unique_ptr<AdcReader> m_pAdc;
};
