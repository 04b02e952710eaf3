// The program on a terminal, looked at through a terminal emulator: keys go in, and what a person
// would see comes out.
#pragma once

#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <vterm.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "temp_dir.h"

inline const std::string kEnter = "\r", kTab = "\t";

std::string Repeat(const std::string& text, int n);
void Mox();  // becomes the program

using Cells = unsigned short;  // as a terminal has its size

class Screen {
 public:
  // Runs child in a process of its own on the terminal, which is one of a kind that TERM tells.
  explicit Screen(const std::function<void()>& child, const char* term = "xterm", Cells rows = 24,
                  Cells cols = 80);
  ~Screen();
  Screen(const Screen&) = delete;
  Screen& operator=(const Screen&) = delete;

  void Resize(Cells cols);  // gives the terminal another width
  // Types keys and waits until the program has taken them and prints no more.
  void Type(const std::string& keys);
  // Reads on until something can be seen; false after 10 seconds without it.
  bool Until(const std::function<bool()>& seen);
  // Types keys and reads on until the bytes of a text have come; they, and what came before, are
  // left out of the next search. False after 10 seconds without it.
  bool Prints(const std::string& keys, const std::string& text);
  // The cells of a row as a text, blanks on the right left out; with reverse, only those cells
  // that are dark on a light ground, a blank there as _, the others as blanks.
  std::string Row(int row, bool reverse = false) const;
  std::string All() const;  // the whole screen, a line each row
  std::pair<int, int> Cursor() const;
  bool Plain(int row, int col) const;                // the cell has the terminal's own colours
  const std::string& Bytes() const { return all_; }  // all that came
  termios Settings() const;
  std::string Mode() const;                                // of the terminal, as one text
  const std::string& FirstMode() const { return found_; }  // before the program
  void Signal(int number);                                 // to the program
  void HangUp();                                           // the terminal goes away
  // The exit status once the program has ended, 128 and the number of the signal that ended it, or
  // -1 when 10 seconds passed.
  int Ended();

 private:
  void Send(const std::string& keys);
  bool Read(int ms);
  bool Waits() const;
  VTermScreenCell Cell(int row, int col) const;

  int master_ = -1, slave_ = -1;
  pid_t pid_ = -1;
  winsize size_;
  VTerm* const vt_;
  VTermScreen* const screen_;
  std::string text_, all_, found_;  // read and not yet fed; ever read; the mode at first
  size_t seen_ = 0;                 // bytes of all that were searched
};

// A test in a folder of its own that starts programs on terminals.
class OnScreen : public testing::Test {
 protected:
  OnScreen();             // a user's history is left alone
  void SetUp() override;  // skips where no pseudo-terminal can be had
  // Runs the program, and types lines at its prompt.
  void Start(const std::vector<std::string>& lines = {}, Cells rows = 24, Cells cols = 80);
  void Lines(const std::vector<std::string>& lines);
  // Expects a text in the row that is so many above the cursor's.
  void Above(int rows, const std::string& text);
  // Types a line and expects what stands above the next prompt.
  void Line(const std::string& keys, const std::string& above, const std::string& end = kEnter);
  void Quit();  // from the prompt, whatever stands there

  TempDir dir_;
  std::unique_ptr<Screen> screen_;
};
