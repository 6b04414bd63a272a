#pragma once

// The GPIO controller that the camera application hands to the library.
// The slot order of the virtual functions is part of the interface.
// Every operation returns non-zero on success and 0 on failure.
class IGPIO {
public:
    virtual ~IGPIO() {}
    virtual int open() = 0;
    virtual int close() = 0;
    // Completion hook: called after a successful controller init.
    virtual int notifySensorReady() = 0;
    virtual int setDirection(int group, int pin, int direction) = 0;
    // Drives a level onto a group and pin.
    virtual int setLevel(int group, int pin, int level) = 0;
    // Reads the level of a group and pin into `level`.
    virtual int getLevel(int group, int pin, int& level) = 0;
};
