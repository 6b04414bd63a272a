#pragma once
// Application devices for benchmarks: a serial port that accepts everything and
// answers nothing, and GPIO lines that accept every level and read a fixed one.
#include "app/IGPIO.h"
#include "app/IUARTController.h"

class IdleUART : public IUARTController {
public:
    int open(const char*) override { return 0; }
    int setParameter(int, int, int, int, int) override { return 1; }
    int write(int, const char*, int length) override { return length; }
    int read(int, char*, int, int) override { return 0; }
};

class IdleGPIO : public IGPIO {
public:
    explicit IdleGPIO(int readLevel = 1) : m_nReadLevel(readLevel) {}
    int open() override { return 1; }
    int close() override { return 1; }
    int notifySensorReady() override { return 1; }
    int setDirection(int, int, int) override { return 1; }
    int setLevel(int, int, int) override { return 1; }
    int getLevel(int, int, int& level) override {
        level = m_nReadLevel;
        return 1;
    }

private:
    int m_nReadLevel;
};
