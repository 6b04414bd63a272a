#pragma once
#include <cstddef>
#include <vector>

#include "drivers/serial/ViscaSenseController.h"

// The engine of the CMD zoom block cameras (CMD8100, its earlier firmware and
// CMD7300): VISCA, camera address 1, replies in the search form (90 41 FF or
// 90 51 FF found in a 3-byte read). The three modules share one operation set
// and one numbering of the parameter ids, which starts from 0 and differs from
// the Sony numbering; a module is the rows of that catalogue it has, with its
// accepted values (rowsWithRanges), and its start-up.
class CMDSenseController : public ViscaSenseController {
public:
    // The operations that only these modules' rows have (beside the shared ones,
    // which carry the Sony numbering's id, see ViscaParameter::operation).
    enum { OpPhotometry = 1001, OpEnterAutoMode = 1002 };

    // The catalogue's rows of the given ids with a module's accepted values.
    static std::vector<ViscaParameter> rowsWithRanges(const ViscaParameter::Range* ranges, size_t count);

    // Full auto exposure, automatic white balance and auto focus, in that order.
    int enterAutoMode() override;
    // Metering: 0 the whole picture, 1 back light compensation, 2 spot.
    int setPhotometry(int p_nPhotometry);

    int initController(int sensorType, const ModuleConfigure& cfg) override;

    // The module generation from the detail key "generation" (0 until read).
    int getGeneration() const { return m_nGeneration; }

protected:
    // `className` names the controller in its start line; `readsGeneration`: the
    // detail text must carry "generation".
    CMDSenseController(int sensorType, const char* className, const char* moduleName, const ViscaParameter* table,
                       size_t count, bool readsGeneration);

    int setModuleRow(const ViscaParameter& row, int value, int& result) override;

private:
    const char* m_pszClassName;
    bool m_bReadsGeneration;
    int m_nGeneration = 0;
};
