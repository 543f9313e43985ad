// Progress on standard error: a bar that is redrawn in place on a terminal, a line a step
// elsewhere.
#ifndef VELNOR_TOOLS_PROGRAM_PROGRESS_H
#define VELNOR_TOOLS_PROGRAM_PROGRESS_H

#include <string>
#include <vector>

namespace program {

class Progress {
  public:
    Progress();

    bool isTerminal() const { return isTerminal_; }

    /// Shows `percentage`, 0 to 100, and `details` behind it, in ASCII: on a terminal as many of
    /// them, from the first one, as leave room for a bar.
    void show(unsigned percentage, const std::vector<std::string>& details = {});

    /// Leaves the bar as it is; what is printed next begins on a line of its own.
    void end();

  private:
    void redraw(unsigned percentage, const std::vector<std::string>& details);

    bool isTerminal_;
    bool isLineOpen_ = false;
    // Columns that the line on the terminal takes, and that its details have taken at most.
    size_t lineSize_ = 0;
    size_t widestDetails_ = 0;
};

}  // namespace program

#endif
