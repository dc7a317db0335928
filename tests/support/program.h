#pragma once

#include <boost/process/child.hpp>
#include <boost/process/pipe.hpp>
#include <filesystem>
#include <string>
#include <vector>

namespace orvane::test {

// A program that runs beside the test, without the user's own settings. The destructor kills it if it is still running.
class Program {
 public:
  Program(const std::string& path, const std::vector<std::string>& arguments,
          const std::filesystem::path& folder = ".");
  ~Program();
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  // The next line of its standard output.
  std::string readLine();

  void send(int signal);
  // Sends a signal and returns the exit code. -1 if it was killed, also because it did not end within 30 seconds.
  int end(int signal);
  int pid() const { return process_.id(); }

 private:
  boost::process::ipstream output_;
  boost::process::child process_;
};

struct Outcome {
  int exitCode = -1;
  std::string output;
  std::string error;
};

// Runs a program to its end.
Outcome runProgram(const std::string& path, const std::vector<std::string>& arguments);

}  // namespace orvane::test
