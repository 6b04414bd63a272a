#pragma once

// Width and height of the video system.
class VideoResolution {
public:
    VideoResolution() = default;
    VideoResolution(int width, int height) : m_nWidth(width), m_nHeight(height) {}

    int getVideoWidth() const { return m_nWidth; }
    int getVideoHeight() const { return m_nHeight; }
    void setVideoWidth(int width) { m_nWidth = width; }
    void setVideoHeight(int height) { m_nHeight = height; }

    bool operator==(const VideoResolution& o) const { return m_nWidth == o.m_nWidth && m_nHeight == o.m_nHeight; }
    bool operator!=(const VideoResolution& o) const { return !(*this == o); }

private:
    int m_nWidth = 0;
    int m_nHeight = 0;
};
