#pragma once
#include <atomic>
#include <cstddef>
#include <string>

#include "drivers/serial/SerialSenseController.h"
#include "drivers/serial/ViscaParameter.h"
#include "platform/SafePointer.h"

#include "platform/CameraLensZMAAlgorithm.h"

// Controller of the Sony FCB-EV7310 zoom block camera on a serial line (VISCA,
// camera address 1). Every command is an acknowledged transaction of the
// message form, every read an inquiry; the parameter ids, their packets and
// accepted values are the rows of one table (parameterTable()).
class FCBEV7310SenseController : public SerialSenseController {
public:
    enum { SensorType = 73, BaudCount = 4, RestartSeconds = 20, ZoomRatioCount = 12 };

    FCBEV7310SenseController();
    ~FCBEV7310SenseController() override;

    // The parameter table of this module, ascending by id.
    static const ViscaParameter* parameterTable(size_t& count);
    // The digital zoom ratio in thousandths for a zoom position (1000 over the
    // whole optical range, 12000 beyond the last row of the ratio table).
    static int zoomRatioOf(int position);
    // The bauds that the camera's baud register selects, by index.
    static int baudOfIndex(int index);
    static int indexOfBaud(int baud);

    // ---- overridden operations, in slot order ----
    int getMirrorValue(int& value) override;
    int IrisUp() override;
    int IrisDown() override;
    int FocusFar(int speed) override;
    int FocusNear(int speed) override;
    int ZoomIn(int speed) override;
    int ZoomOut(int speed) override;
    int getZoomValue(int& position, int& ratio) override;
    int setZoomValue(int position) override;
    int setFocusValue(int position) override;
    int getFocusValue(int& position) override;
    int setFocusMode(int mode) override;
    int getFocusMode(int& mode) override;
    int StopZoomContrl() override;
    int StopFocusContrl() override;
    int setZoomAndFocusValue(int zoom, int focus) override;
    int getStillImageValue(int& value) override;
    int getParameterFromSensor(int id, int& value) override;
    int setParameterToSensor(int id, int value) override;
    int setSensorVideoSystem(int sensorType, const VideoResolution& res) override;
    int getDNStatusFromSensor(int& status) override;
    int turnPictureToDay() override;
    int turnPictureToNight() override;
    int initController(int sensorType, const ModuleConfigure& cfg) override;

    // ---- operations of this module ----
    int setMirror(int p_nMirror);
    int setExposalMode(int p_nMode);
    int setBright(int p_nBright);
    int OnePushTrigger();
    int setCameraBuadRate(int p_nIndex);
    int getCameraBaudRate(int& p_nIndex);
    int changeCameraBuadrate(int p_nBuadrate);
    int restartCamera();
    // Zoom with focus tracking: the zoom position and, when the lens table is
    // loaded, the focus position that the table gives for it, in one packet.
    int setZoomValueTracked(int position);

    // ---- state views ----
    int getExposureMode() const { return m_nExposureMode.load(); }
    bool hasLensTable() const;
    CameraLensZMAAlgorithm& getLensAlgorithm() { return *m_pZMAAlgorithm; }
    int getToDayADCVal() const { return m_nToDayADCVal; }
    int getToNightADCVal() const { return m_nToNightADCVal; }
    int getToDayDelay() const { return m_nToDayDelay; }
    int getDCDay() const { return m_nDCDay; }
    int getDCNight() const { return m_nDCNight; }
    int getNewInfrared() const { return m_nNewInfrared; }

private:
    // A row's value through its command, the refusal text when out of range.
    int sendRow(const ViscaParameter& row, int value);
    // The inquiry of a row's command, decoded.
    int inquireRow(const ViscaParameter& row, int& value);
    int sendPacket(const unsigned char* packet, int length);
    int sendCommand(unsigned char code, const unsigned char* values, int count);
    // The value that a group packet carries for one of its ids: the cached value, else the default.
    int groupValue(int id);
    int sendWideDynamicGroup(int id, int value);
    // Two ids in one packet `code` 0p 0q 0r 0s: pq the first id's value, rs the second's
    // (spot AE position X/Y, lens movement/interval).
    int sendPairGroup(unsigned char code, int firstId, int secondId, int id, int value);
    int sendHighlight(int id, int value);
    int sendDefog(int value);
    int sendSharpness(int value);
    int sendFocusNearLimit(int value);
    int setWhiteBalanceMode(int value);
    int setBrightScaled(int value);
    int setBaseOperation(int id, int value, int& result);
    bool statusReady();
    void loadLensTable();
    void readDayNightKeys(const ModuleConfigure& cfg);
    void drainUnderLock();

    SafePointer<CameraLensZMAAlgorithm> m_pZMAAlgorithm;
    std::atomic<int> m_nExposureMode{0};  // written by the parameter path, read by any caller
    int m_nAutoIris = 0;
    int m_nNewInfrared = 0;
    int m_nToDayADCVal = 0;
    int m_nToNightADCVal = 0;
    int m_nToDayDelay = 0;
    int m_nDCDay = 0;
    int m_nDCNight = 0;
};
