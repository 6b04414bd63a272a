#pragma once
#include <atomic>
#include <cstddef>

#include "drivers/serial/SerialSenseController.h"
#include "drivers/serial/ViscaParameter.h"

// The engine shared by the controllers of VISCA zoom block cameras (camera
// address 1): a module is its parameter table (id -> command, coding, accepted
// values) and the few operations that no row shape covers. The Sony block
// cameras share one numbering of the parameter ids; a row of shape Controller
// is coded here by its id (groups, scaled values, the base controller's
// operations) unless the module's controller codes it itself (setModuleRow).
class ViscaSenseController : public SerialSenseController {
public:
    enum { ZoomRatioCount = 12 };

    // `moduleName` prefixes the request debug line; `table` is ascending by id
    // and outlives the controller.
    ViscaSenseController(int sensorType, ReplyForm form, const char* moduleName, const ViscaParameter* table,
                         size_t count);

    // The digital zoom ratio in thousandths for a zoom position (1000 over the
    // whole optical range, 12000 beyond the last row of the ratio table).
    static int zoomRatioOf(int position);
    const ViscaParameter* findRow(int id) const { return ViscaParameter::find(m_pTable, m_nTableSize, id); }

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
    // The acknowledged transaction; in the search form the command's completion
    // is then awaited (see awaitCompletion).
    int setParameterValue(const char* packet, int length) override;
    int setSensorVideoSystem(int sensorType, const VideoResolution& res) override;
    int getDNStatusFromSensor(int& status) override;
    int turnPictureToDay() override;
    int turnPictureToNight() override;

    // ---- VISCA operations shared by the modules ----
    int setMirror(int p_nMirror);
    int setExposalMode(int p_nMode);
    int setBright(int p_nBright);
    int OnePushTrigger();

    int getExposureMode() const { return m_nExposureMode.load(); }

protected:
    // A module's own coding of a row of shape Controller: 1 and `result` set when
    // the module codes the row, 0 to leave it to the shared coding.
    virtual int setModuleRow(const ViscaParameter& row, int value, int& result);

    // Two on/off commands that together code a value: for `value` (0 to count-1)
    // `firstCode` with pairs[value].first, then `secondCode` with .second; a
    // failure of the first stops. A value outside prints "<rangeName>(%d) is out of range".
    struct SwitchPair {
        bool first, second;
    };
    int sendSwitchPair(const char* rangeName, int value, const SwitchPair* pairs, int count, unsigned char firstCode,
                       unsigned char secondCode);

    int sendPacket(const unsigned char* packet, int length);
    int sendCommand(unsigned char code, const unsigned char* values, int count);
    // A row's value through its command (nothing sent in an exposure mode that decides it).
    int sendRow(const ViscaParameter& row, int value);
    // The inquiry of a row's command, decoded.
    int inquireRow(const ViscaParameter& row, int& value);
    // The value that a group packet carries for one of its ids: the cached value, else the default.
    int groupValue(int id);
    bool statusReady();
    void drainUnderLock();
    // The search form reads only the 3 bytes of the acknowledgement: when the
    // reply was the acknowledgement (not already the completion), the
    // completion that follows it is read here, within the search time-out, so
    // that it is not taken for the reply to the next packet and the module's
    // first socket is free again when the next command comes.
    void awaitCompletion();

    std::atomic<int> m_nExposureMode{0};  // written by the parameter path, read by any caller
    int m_nAutoIris = 0;

private:
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
    int setBaseOperation(int operation, int value, int& result);

    ReplyForm m_eReplyForm;
    const char* m_pszModuleName;
    const ViscaParameter* m_pTable;
    size_t m_nTableSize;
};
