// Progress on standard output: a bar that is redrawn in place on a terminal, a line a step
// elsewhere.
#ifndef VELNOR_TOOLS_VNCTL_PROGRESS_H
#define VELNOR_TOOLS_VNCTL_PROGRESS_H

namespace vnctl {

class Progress {
  public:
    Progress();

    /// Shows `percentage`, 0 to 100.
    void show(unsigned percentage);

    /// Leaves the bar as it is; what is printed next begins on a line of its own.
    void end();

  private:
    void redraw(unsigned percentage) const;

    bool isTerminal_;
    bool isLineOpen_ = false;
};

}  // namespace vnctl

#endif
