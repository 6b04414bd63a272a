#pragma once
#include "isp/ISPParam.h"

// Reader of the ISP tuning file "/hd1/program/config/ISPParam.xml".
//
// The file is a configuration document of the platform XML model:
//
//     <config realTimeUpdate="0" time="1">          the root node
//         <GAIN enable="1">                         one node per table
//             <g0 min="0" max="16">                 one node per band
//                 <item name="EE" value="30"/>      one item per setting
//                 <item name="A0" value="-1"/>
//             </g0>
//         </GAIN>
//     </config>
//
// "realTimeUpdate" asks the controller to re-read the file on every pass of
// its ISP loop, and "time" is that loop's pause in seconds.
//
// The reader does not check the file beyond what the XML model checks. Absent
// or non-numeric properties take these values:
//   - "realTimeUpdate": false, "time": 1 (the defaults below);
//   - a table's "enable": false (an unflagged table is not applied);
//   - a band's "min" and "max": 0, which makes the band [0,0) match no key; one
//     bound alone present leaves the other at 0;
//   - an item's "value": 0; an item's "name": the empty text (stored, never
//     looked up by the controller).
// A band that lists the same setting twice keeps the later value; a band name
// met again under the same table adds to the first band of that name, whose
// bounds stay as first read. A document without a "config" node reads as an
// empty table set with the defaults.
//
// A reader is meant for one read: make it, parse(), copy the tables out.
class ISPParamParse {
public:
    static const char* const FilePath;  // "/hd1/program/config/ISPParam.xml"

    ISPParamParse();
    ~ISPParamParse();
    ISPParamParse(const ISPParamParse&) = delete;
    ISPParamParse& operator=(const ISPParamParse&) = delete;

    // Reads the file into this reader's tables and root properties. False when
    // the file cannot be opened (missing, unreadable or malformed), after
    // printing "open ISPParam.xml failed", or when storing a setting fails.
    bool parse();

    // Copies the tables read into p_objParam (a copy onto itself does nothing).
    bool getISPParam(ISPParam& p_objParam) const;

    bool getRealTimeUpdate() const { return m_bRealTimeUpdate; }
    int getDelayTime() const { return m_nDelayTime; }

private:
    bool m_bRealTimeUpdate = false;
    int m_nDelayTime = 1;
    ISPParam m_objISPParam;
};
