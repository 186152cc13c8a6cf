#ifndef VORNIC_TESTS_FAULTS_CASE_WORKERS_H
#define VORNIC_TESTS_FAULTS_CASE_WORKERS_H

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace vornic::test {

/// What a worker has to say of a case.
struct CaseAnswer {
    bool tried = false;
    bool isWrong = false;
    /// What is to be printed.
    std::string told;
};

/// Tries cases in several processes at once. Each is a copy of this one and waits for the programs
/// that it starts itself.
class CaseWorkers {
  public:
    /// Tries the case of a number; called in the workers.
    using Try = std::function<CaseAnswer(std::size_t number)>;
    /// Takes the answer to the case of a number; called here, in the order in which they come.
    using Take = std::function<void(std::size_t number, const CaseAnswer& answer)>;

    /// Starts the workers.
    CaseWorkers(std::size_t workers, const Try& tryCase);
    /// Ends them and waits until they have ended.
    ~CaseWorkers();
    CaseWorkers(const CaseWorkers&) = delete;
    CaseWorkers& operator=(const CaseWorkers&) = delete;

    /// Has the cases from 0 to `count` tried.
    /// @param mayGoOn asked before a case is begun; after false those that have begun are finished
    /// @return the cases whose worker ended without an answer
    [[nodiscard]] std::vector<std::size_t> tryAll(std::size_t count, const Take& take,
                                                  const std::function<bool()>& mayGoOn);

  private:
    struct Worker {
        pid_t process = -1;
        int line = -1;
        std::optional<std::size_t> number;
    };
    void give(Worker& worker, std::size_t number);
    void finish(Worker& worker, const Take& take);

    std::vector<Worker> workers_;
    std::vector<std::size_t> lost_;
};

}  // namespace vornic::test

#endif
