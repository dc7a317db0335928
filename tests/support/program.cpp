#include "tests/support/program.h"

#include <boost/process/args.hpp>
#include <boost/process/extend.hpp>
#include <boost/process/io.hpp>
#include <boost/process/start_dir.hpp>
#include <csignal>
#include <cstdlib>
#include <iterator>

#include <linux/close_range.h>
#include <unistd.h>

#include "tests/support/holdssoon.h"

namespace orvane::test {
namespace {

namespace process = boost::process;

// Before any program starts: none reads the user's settings or token.
[[maybe_unused]] const bool hasOwnEnvironment =
    setenv("XDG_CONFIG_HOME", "/nowhere", 1) == 0 && unsetenv("POCKET_TOKEN") == 0;

}  // namespace

// Without the test's own sockets: a connection that a phone closes would stay open in the program.
Program::Program(const std::string& path, const std::vector<std::string>& arguments,
                 const std::filesystem::path& folder)
    : process_(path, process::args(arguments), process::start_dir(folder.string()), process::std_out > output_,
               process::extend::on_exec_setup([](auto& /*executor*/) { close_range(3, ~0U, CLOSE_RANGE_CLOEXEC); })) {}

Program::~Program() {
  if (process_.valid() && process_.running()) end(SIGKILL);
}

std::string Program::readLine() {
  std::string line;
  std::getline(output_, line);
  return line;
}

void Program::send(int signal) { ::kill(process_.id(), signal); }

int Program::end(int signal) {
  send(signal);
  if (signal != SIGKILL && !holdsSoon([this] { return !process_.running(); })) send(SIGKILL);
  process_.wait();
  return WIFSIGNALED(process_.native_exit_code()) ? -1 : process_.exit_code();
}

Outcome runProgram(const std::string& path, const std::vector<std::string>& arguments) {
  process::ipstream output;
  process::ipstream error;
  process::child child(path, process::args(arguments), process::std_out > output, process::std_err > error);
  Outcome outcome;
  outcome.output = {std::istreambuf_iterator<char>(output), {}};
  outcome.error = {std::istreambuf_iterator<char>(error), {}};
  child.wait();
  outcome.exitCode = child.exit_code();
  return outcome;
}

}  // namespace orvane::test
