#pragma once
#include <cstddef>
#include <string>
#include <vector>

#include "core/SensorTypes.h"
#include "drivers/serial/ViscaSenseController.h"
#include "platform/SafePointer.h"

#include "platform/CameraLensZMAAlgorithm.h"

// Controller of the Sony FCB-EV7310 zoom block camera on a serial line (VISCA,
// camera address 1). Every command is an acknowledged transaction of the
// message form, every read an inquiry; the parameter ids, their packets and
// accepted values are the rows of one table (parameterTable()).
class FCBEV7310SenseController : public ViscaSenseController {
public:
    enum { SensorType = SensorTypes::FCBEV7310, BaudCount = 4, RestartSeconds = 20 };

    FCBEV7310SenseController();
    ~FCBEV7310SenseController() override;

    // The parameter table of this module, ascending by id.
    static const ViscaParameter* parameterTable(size_t& count);
    // This module's rows of the given ids with another module's accepted values:
    // the table of a module that carries the same operations in the same packets.
    static std::vector<ViscaParameter> rowsWithRanges(const ViscaParameter::Range* ranges, size_t count);
    // The bauds that the camera's baud register selects, by index.
    static int baudOfIndex(int index);
    static int indexOfBaud(int baud);

    // ---- overridden operations, in slot order ----
    int initController(int sensorType, const ModuleConfigure& cfg) override;

    // ---- operations of this module ----
    int setCameraBuadRate(int p_nIndex);
    int getCameraBaudRate(int& p_nIndex);
    int changeCameraBuadrate(int p_nBuadrate);
    int restartCamera();
    // Zoom with focus tracking: the zoom position and, when the lens table is
    // loaded, the focus position that the table gives for it, in one packet.
    int setZoomValueTracked(int position);

    // ---- state views ----
    bool hasLensTable() const;
    CameraLensZMAAlgorithm& getLensAlgorithm() { return *m_pZMAAlgorithm; }
    int getToDayADCVal() const { return m_nToDayADCVal; }
    int getToNightADCVal() const { return m_nToNightADCVal; }
    int getToDayDelay() const { return m_nToDayDelay; }
    int getDCDay() const { return m_nDCDay; }
    int getDCNight() const { return m_nDCNight; }
    int getNewInfrared() const { return m_nNewInfrared; }

private:
    void loadLensTable();
    void readDayNightKeys(const ModuleConfigure& cfg);

    SafePointer<CameraLensZMAAlgorithm> m_pZMAAlgorithm;
    int m_nNewInfrared = 0;
    int m_nToDayADCVal = 0;
    int m_nToNightADCVal = 0;
    int m_nToDayDelay = 0;
    int m_nDCDay = 0;
    int m_nDCNight = 0;
};
