#pragma once
#include <cstddef>

class IdManager;

// The parameter id ranges that each controller class registers, kept as data
// in one place so that every driver registers its ranges from here.
struct IdRange {
    int type;  // IdManager type number
    int firstId;
    int lastId;
};

class ControllerIdTable {
public:
    // The ranges of a controller class, by class name; nullptr when unknown.
    static const IdRange* find(const char* controllerName, size_t& count);
    // Registers the ranges of a controller class; false when the name is unknown.
    static bool registerIds(const char* controllerName, IdManager& ids);
    // Number of controller classes in the table and their names, for listings.
    static size_t controllerCount();
    static const char* controllerName(size_t index);
};
