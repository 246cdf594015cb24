#include "ToolRunner.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>

extern char** environ;

ToolResult_t RunTool(const std::string& program, const std::vector<std::string>& arguments,
                     const std::map<std::string, std::string>& environment)
{
    std::vector<std::string> envText;
    for (char** p = environ; *p != nullptr; ++p)
    {
        const std::string entry = *p;
        const std::string name = entry.substr(0, entry.find('='));
        if (environment.count(name) == 0)
            envText.push_back(entry);
    }
    for (const auto& item : environment)
        if (item.second != kUnset)
            envText.push_back(item.first + "=" + item.second);
    std::vector<char*> envp;
    for (std::string& entry : envText)
        envp.push_back(&entry[0]);
    envp.push_back(nullptr);

    std::vector<std::string> argText{program};
    argText.insert(argText.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    for (std::string& argument : argText)
        argv.push_back(&argument[0]);
    argv.push_back(nullptr);

    int outPipe[2], errPipe[2];
    if (pipe2(outPipe, O_CLOEXEC) != 0 || pipe2(errPipe, O_CLOEXEC) != 0)
        throw std::runtime_error("pipe failed");
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, outPipe[1], STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, errPipe[1], STDERR_FILENO);
    pid_t pid = 0;
    const int spawned = posix_spawn(&pid, program.c_str(), &actions, nullptr, argv.data(), envp.data());
    posix_spawn_file_actions_destroy(&actions);
    close(outPipe[1]);
    close(errPipe[1]);
    ToolResult_t result;
    if (spawned != 0)
    {
        close(outPipe[0]);
        close(errPipe[0]);
        result.err = std::string("cannot run ") + program + ": " + std::strerror(spawned);
        return result;
    }
    // Read both pipes together so that a chatty child never blocks on a full one.
    pollfd fds[2] = {{outPipe[0], POLLIN, 0}, {errPipe[0], POLLIN, 0}};
    std::string* sinks[2] = {&result.out, &result.err};
    int open = 2;
    while (open > 0)
    {
        if (poll(fds, 2, -1) < 0)
            break;
        for (int i = 0; i < 2; ++i)
        {
            if (fds[i].fd < 0 || fds[i].revents == 0)
                continue;
            char buffer[4096];
            const ssize_t n = read(fds[i].fd, buffer, sizeof(buffer));
            if (n > 0)
                sinks[i]->append(buffer, static_cast<size_t>(n));
            else
            {
                close(fds[i].fd);
                fds[i].fd = -1;
                --open;
            }
        }
    }
    int status = 0;
    waitpid(pid, &status, 0);
    result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return result;
}

std::string QvCamPath()
{
    const char* path = std::getenv("QV_QVCAM");
    return path != nullptr ? path : "";
}

CTempFolder::CTempFolder()
{
    const char* tmp = std::getenv("TMPDIR");
    std::string pattern = std::string(tmp != nullptr && tmp[0] != '\0' ? tmp : "/tmp") + "/qvcam-test-XXXXXX";
    if (mkdtemp(&pattern[0]) == nullptr)
        throw std::runtime_error("mkdtemp failed");
    m_path = pattern;
}

CTempFolder::~CTempFolder()
{
    RunTool("/bin/rm", {"-rf", m_path});
}

std::string ReadFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}
