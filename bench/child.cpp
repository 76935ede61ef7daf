// SPDX-License-Identifier: MIT
#include "bench/child.h"

#include <chrono>
#include <istream>
#include <map>
#include <memory>
#include <ostream>
#include <sstream>
#include <utility>

#include "bench/bounds.h"

namespace kfx::bench {
namespace {

struct Session {
    const std::vector<Job>& jobs;
    std::map<std::string, std::unique_ptr<Shot>> shots = {};
    std::map<std::string, Limits> limits = {};                    // by shot
    std::map<std::pair<size_t, std::string>, Run> prepared = {};  // by job and shot
};

void AnswerFrame(Session* session, std::istream& words, std::ostream& answers) {
    std::string name, path;
    int32_t width = 0, height = 0, frames = 0;
    auto shot = std::make_unique<Shot>();
    if (!(words >> name >> width >> height >> frames >> std::ws) || !std::getline(words, path) ||
        !ReadShot(path, width, height, frames, shot.get())) {
        answers << "no\n";
        return;
    }
    // What was made ready works on the shot that goes.
    std::erase_if(session->prepared, [&](const auto& entry) { return entry.first.second == name; });
    session->shots[name] = std::move(shot);
    answers << "ok\n";
}

void AnswerList(const Session& session, std::ostream& answers) {
    for (size_t i = 0; i < session.jobs.size(); ++i) {
        const Job& job = session.jobs[i];
        answers << "item\t" << i << '\t' << job.name << '\t' << job.variant << '\t' << job.operation << '\t'
                << (job.allFrames ? "animation" : "picture") << '\n';
    }
    answers << "end\n";
}

// The milliseconds of one run; below 0 when the job is not for the shot or has failed.
double TimeRun(Session* session, size_t number, const std::string& name) {
    const auto shot = session->shots.find(name);
    if (number >= session->jobs.size() || shot == session->shots.end()) return -1;
    const auto [entry, isNew] = session->prepared.try_emplace({number, name});
    if (isNew) entry->second = session->jobs[number].prepare(*shot->second);
    if (!entry->second) return -1;
    using Clock = std::chrono::steady_clock;
    const Clock::time_point start = Clock::now();
    const bool done = entry->second();
    const std::chrono::duration<double, std::milli> took = Clock::now() - start;
    return done ? took.count() : -1;
}

void AnswerRun(Session* session, std::istream& words, std::ostream& answers) {
    size_t number = 0;
    std::string name;
    const double milliseconds = words >> number >> name ? TimeRun(session, number, name) : -1;
    if (milliseconds < 0)
        answers << "no\n";
    else
        answers << "ms " << milliseconds << '\n';
}

void AnswerLimits(Session* session, std::istream& words, std::ostream& answers) {
    std::string name;
    const auto shot = words >> name ? session->shots.find(name) : session->shots.end();
    if (shot != session->shots.end()) {
        Limits* best = &session->limits[name];
        MeasureLimits(3 * PixelsOfFrame(*shot->second), best);
        for (size_t i = 0; i < kLimitCount; ++i)
            answers << "limit\t" << kLimitNames[i].text << '\t' << best->*kLimitNames[i].value << '\n';
    }
    answers << "end\n";
}

void AnswerBound(const Session& session, std::istream& words, std::ostream& answers) {
    size_t number = 0;
    std::string name;
    Bound bound;
    if (words >> number >> name && number < session.jobs.size() && session.shots.count(name) &&
        session.limits.count(name)) {
        const Job& job = session.jobs[number];
        const Shot& shot = *session.shots.at(name);
        bound = BoundOf(job.name, job.variant, shot.width, shot.height, session.limits.at(name));
    }
    if (bound.milliseconds > 0)
        answers << "bound\t" << bound.milliseconds << '\t' << bound.by << '\n';
    else
        answers << "no\n";
}

}  // namespace

void AnswerQuestions(const std::vector<Job>& jobs, std::istream& questions, std::ostream& answers) {
    Session session = {.jobs = jobs};
    for (std::string line; std::getline(questions, line);) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        std::istringstream words(line);
        std::string question;
        words >> question;
        if (question == "quit") return;
        if (question == "frame")
            AnswerFrame(&session, words, answers);
        else if (question == "list")
            AnswerList(session, answers);
        else if (question == "run")
            AnswerRun(&session, words, answers);
        else if (question == "limits")
            AnswerLimits(&session, words, answers);
        else if (question == "bound")
            AnswerBound(session, words, answers);
        else
            answers << "no\n";
        answers.flush();
    }
}

}  // namespace kfx::bench
