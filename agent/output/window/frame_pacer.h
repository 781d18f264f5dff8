#pragma once
// When one window may show its next frame. Main thread.

namespace vantor::agent {

/// Calls what it was made with once for each time that it is asked, from the loop.
class FramePacer {
  public:
    virtual ~FramePacer() = default;
    /// Nothing changes when one call is awaited already.
    virtual void request() = 0;
    /// As `request`, for a frame that is presented right after this.
    virtual void willPresent() = 0;
    /// Of the display that the window is on, in hertz.
    virtual void setRate(double hertz) = 0;
};

} // namespace vantor::agent
