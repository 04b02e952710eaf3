// The program on a terminal, looked at through a terminal emulator: keys go in, and what a person
// would see comes out.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

class Screen {
 public:
  static bool Possible();  // false where no pseudo-terminal can be had
  // Runs program with args in the folder dir.
  Screen(std::string program, std::vector<std::string> args, const std::filesystem::path& dir,
         int rows = 24, int cols = 80);
  // Runs child in a process of its own on the terminal, which is one of a kind that TERM tells.
  explicit Screen(const std::function<void()>& child, const char* term = "xterm", int rows = 24,
                  int cols = 80);
  ~Screen();
  Screen(const Screen&) = delete;
  Screen& operator=(const Screen&) = delete;

  void Resize(int cols);  // gives the terminal another width
  // Types keys and waits until the program has taken them and prints no more.
  void Type(const std::string& keys);
  // Reads on until something can be seen; false after 10 seconds without it.
  bool Until(const std::function<bool()>& seen);
  // The same for a text at a place.
  bool Sees(int row, int col, const std::string& text);
  // The cells of a row as a text, blanks on the right left out; with reverse, only those cells
  // that are dark on a light ground, a blank there as _, the others as blanks.
  std::string Row(int row, bool reverse = false) const;
  std::string All() const;  // the whole screen, a line each row
  std::pair<int, int> Cursor() const;
  bool Plain(int row, int col) const;  // the cell has the terminal's own colours
  // Types keys and reads on until the bytes of a text have come; they, and what came before, are
  // left out of the next search. False after 10 seconds without it.
  bool Prints(const std::string& keys, const std::string& text);
  const std::string& Bytes() const;  // all that came
  std::string Mode() const;          // of the terminal, as one text
  unsigned Flags() const;            // the local ones of the mode, as ECHO
  std::string FirstMode() const;     // before the program
  void Signal(int number);           // to the program
  void HangUp();                     // the terminal goes away
  // The exit status once the program has ended, 128 and the number of the signal that ended it, or
  // -1 when 10 seconds passed.
  int Ended();

 private:
  struct Terminal;
  std::unique_ptr<Terminal> t_;
};
