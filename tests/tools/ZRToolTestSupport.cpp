#include "ZRToolTestSupport.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <sys/wait.h>

std::string ZRToolQuote(const std::string& word)
{
    std::string quoted = "'";
    for (const char c : word)
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

ZRToolRun ZRToolRunShell(const std::string& commandLine)
{
    const std::string errors = std::filesystem::temp_directory_path() / ("zr-tool-test-" + std::to_string(getpid()));
    ZRToolRun run;
    FILE* pipe = popen((commandLine + " 2>" + ZRToolQuote(errors)).c_str(), "r");
    if (!pipe)
        return run;
    std::array<char, 65536> chunk;
    size_t count;
    while ((count = fread(chunk.data(), 1, chunk.size(), pipe)) > 0)
        run.output.append(chunk.data(), count);
    const int status = pclose(pipe);
    run.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    run.errors = ZRToolReadFile(errors);
    std::filesystem::remove(errors);
    return run;
}

ZRToolRun ZRToolRunZr(const std::vector<std::string>& arguments, const std::string& prefix)
{
    std::string commandLine = prefix + ZRToolQuote(ZR_EXECUTABLE);
    for (const std::string& argument : arguments)
        commandLine += " " + ZRToolQuote(argument);
    return ZRToolRunShell(commandLine);
}

std::string ZRToolScratch(const std::string& name)
{
    const std::filesystem::path folder = std::filesystem::path(ZR_TOOL_SCRATCH) / name;
    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder);
    return folder.string();
}

std::string ZRToolReadFile(const std::string& path)
{
    std::ifstream stream(path, std::ios::binary);
    std::ostringstream contents;
    contents << stream.rdbuf();
    return contents.str();
}

double ZRToolSoxStat(const std::string& file, const std::string& row, int column, const std::string& effects)
{
    const ZRToolRun run = ZRToolRunShell("sox " + ZRToolQuote(file) + " -n " + effects + " stats");
    std::istringstream lines(run.errors);
    std::string line;
    while (std::getline(lines, line)) {
        if (line.rfind(row, 0) != 0)
            continue;
        // Columns that do not apply read "-".
        std::istringstream values(line.substr(row.size()));
        std::vector<double> numbers;
        std::string word;
        while (values >> word)
            numbers.push_back(word == "-" ? NAN : std::stod(word));
        // A mono file has one column, which is the overall one.
        if (numbers.size() == 1)
            return numbers[0];
        return size_t(column) < numbers.size() ? numbers[size_t(column)] : NAN;
    }
    return NAN;
}
