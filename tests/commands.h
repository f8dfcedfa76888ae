// Programs run as users run them: each step is a shell command.
#pragma once

#include "helper.h"

/// Runs bash commands in the temporary folder, after those of section [commands]. Returns output and exit code.
inline State run(const QString& command)
{
    QProcess bash;
    bash.setWorkingDirectory(folder().path());
    bash.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    bash.start("bash", {"-c", section("commands").join('\n') + '\n' + command});
    bash.waitForFinished(-1);
    return {{"says", QString(bash.readAllStandardOutput()).simplified()}, {"exit", text_of(bash.exitCode())}};
}

/// Plays the scene of the current test function. `act` returns what can be seen.
inline void play_commands(const std::function<State(const QString&)>& act = run)
{
    State seen;
    play([&](const QString& step) { seen = act(step); }, [&] { return seen; });
}
