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
  Screen(std::string program, std::vector<std::string> args, const std::filesystem::path& dir,
         int rows = 24, int cols = 80);
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
  void HangUp();                       // the terminal goes away
  // The exit status once the program has ended; -1 when a signal ended it or 10 seconds passed.
  int Ended();

 private:
  struct Terminal;
  std::unique_ptr<Terminal> t_;
};
