// SPDX-License-Identifier: Apache-2.0
#include "simulator/runners/transfers.h"

#include <curl/curl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <thread>
#include <utility>

namespace simulator::runners {

namespace {

struct EasyEnd {
    void operator()(CURL *easy) const { curl_easy_cleanup(easy); }
};
struct ListEnd {
    void operator()(curl_slist *list) const { curl_slist_free_all(list); }
};

template <typename Value>
void set(CURL *easy, CURLoption option, Value value) {
    CURLcode const code = curl_easy_setopt(easy, option, value);
    if (code != CURLE_OK) {
        throw std::runtime_error(std::string("the transfer cannot be prepared: ") + curl_easy_strerror(code));
    }
}

void startCurl() {
    // Never taken down: a look-up of a name that hangs may outlive everything.
    static std::once_flag once;
    std::call_once(once, [] {
        if (curl_global_init(CURL_GLOBAL_DEFAULT) != CURLE_OK) {
            throw std::runtime_error("libcurl cannot be started");
        }
    });
}

}  // namespace

struct Transfers::Transfer {
    Transfer(Delivery what, Done then) : delivery(std::move(what)), done(std::move(then)) {}

    /// Where it counts to the bound.
    std::string const &place() const { return delivery.server.address; }

    RunResult result() const {
        bool const is_mail = delivery.kind == Delivery::Kind::mail;
        if (code == CURLE_OK) {
            return {true, is_mail ? "mail sent to " + std::to_string(delivery.recipients.size()) +
                                        " recipients through " + quoted(place())
                                  : "picture uploaded to " + quoted(delivery.url)};
        }
        std::string words =
            std::string(is_mail ? "the mail was not taken by " : "the upload was not taken by ") +
            quoted(place()) + ": " + (error[0] == '\0' ? curl_easy_strerror(code) : error.data());
        if (code == CURLE_USE_SSL_FAILED) {
            words += "; a login goes to servers with TLS only";
        }
        return {false, std::move(words)};
    }

    static std::size_t read(char *to, std::size_t size, std::size_t count, void *context) {
        auto &transfer = *static_cast<Transfer *>(context);
        std::string const &contents = transfer.delivery.contents;
        std::size_t const taken = std::min(size * count, contents.size() - transfer.sent);
        std::memcpy(to, contents.data() + transfer.sent, taken);
        transfer.sent += taken;
        return taken;
    }

    Delivery delivery;
    Done done;
    std::size_t sent = 0;
    std::array<char, CURL_ERROR_SIZE> error{};
    CURLcode code = CURLE_OK;
    std::unique_ptr<curl_slist, ListEnd> recipients;
    std::unique_ptr<CURL, EasyEnd> easy;
    std::thread thread;
};

Transfers::Transfers(Settings settings, std::function<void()> over, Log const &log)
    : settings_(std::move(settings)), over_(std::move(over)), log_(log) {
    startCurl();
}

Transfers::~Transfers() {
    stop_ = true;
    sockets_.with([](std::set<int> const &sockets) {
        for (int const socket : sockets) {
            ::shutdown(socket, SHUT_RDWR);
        }
    });
    std::size_t const given_up = shared_.with([](Shared &shared) { return shared.count; });
    for (;;) {
        // It stays where it is in memory when it moves to the other list.
        Transfer *const one = shared_.with(
            [](Shared &shared) { return shared.on_way.empty() ? nullptr : &shared.on_way.front(); });
        if (one == nullptr) {
            break;
        }
        one->thread.join();
    }
    shared_.with([](Shared &shared) {
        for (Transfer &one : shared.over) {
            if (one.thread.joinable()) {
                one.thread.join();
            }
        }
    });
    if (given_up != 0) {
        try {
            log_.warning(std::to_string(given_up) + " mails and uploads were given up at the end");
        } catch (std::exception const &) {
            // Nobody can be told.
        }
    }
}

int Transfers::openSocket(void *context, int, curl_sockaddr *address) noexcept {
    auto &transfers = *static_cast<Transfers *>(context);
    try {
        return transfers.sockets_.with([&](std::set<int> &sockets) {
            int const socket = transfers.stop_ ? -1
                                               : ::socket(address->family, address->socktype | SOCK_CLOEXEC,
                                                          address->protocol);
            if (socket >= 0) {
                try {
                    sockets.insert(socket);
                } catch (...) {
                    ::close(socket);
                    throw;
                }
            }
            return socket;
        });
    } catch (std::exception const &) {
        return -1;
    }
}

int Transfers::closeSocket(void *context, int socket) noexcept {
    return static_cast<Transfers *>(context)->sockets_.with([socket](std::set<int> &sockets) {
        sockets.erase(socket);
        return ::close(socket);
    });
}

int Transfers::isToStop(void *context, std::int64_t, std::int64_t, std::int64_t, std::int64_t) noexcept {
    return static_cast<Transfers *>(context)->stop_ ? 1 : 0;
}

void Transfers::prepare(Transfer &transfer, bool only_with_tls) {
    transfer.easy.reset(curl_easy_init());
    CURL *const easy = transfer.easy.get();
    if (easy == nullptr) {
        throw std::bad_alloc();
    }
    bool const is_mail = transfer.delivery.kind == Delivery::Kind::mail;
    set(easy, CURLOPT_ERRORBUFFER, transfer.error.data());
    set(easy, CURLOPT_NOSIGNAL, 1L);
    // What hangs is left behind and not waited for, look-ups of names included.
    set(easy, CURLOPT_QUICK_EXIT, 1L);
    set(easy, CURLOPT_TIMEOUT_MS, static_cast<long>(settings_.time_out.count()));
    set(easy, CURLOPT_PROTOCOLS_STR, is_mail ? "smtp" : "ftp");
    set(easy, CURLOPT_URL, transfer.delivery.url.c_str());
    set(easy, CURLOPT_PATH_AS_IS, 1L);
    // Not by way of what the environment names.
    set(easy, CURLOPT_PROXY, "");
    // Also for the last words to a server.
    set(easy, CURLOPT_SERVER_RESPONSE_TIMEOUT, static_cast<long>(settings_.time_out.count() / 1000 + 1));
    set(easy, CURLOPT_OPENSOCKETFUNCTION, &Transfers::openSocket);
    set(easy, CURLOPT_OPENSOCKETDATA, this);
    set(easy, CURLOPT_CLOSESOCKETFUNCTION, &Transfers::closeSocket);
    set(easy, CURLOPT_CLOSESOCKETDATA, this);
    set(easy, CURLOPT_XFERINFOFUNCTION, &Transfers::isToStop);
    set(easy, CURLOPT_XFERINFODATA, this);
    set(easy, CURLOPT_NOPROGRESS, 0L);
    set(easy, CURLOPT_USE_SSL, static_cast<long>(only_with_tls ? CURLUSESSL_ALL : CURLUSESSL_TRY));
    if (!settings_.authorities.empty()) {
        set(easy, CURLOPT_CAINFO, settings_.authorities.c_str());
    }
    if (!transfer.delivery.username.empty()) {
        set(easy, CURLOPT_USERNAME, transfer.delivery.username.c_str());
        set(easy, CURLOPT_PASSWORD, transfer.delivery.password.c_str());
    }
    set(easy, CURLOPT_UPLOAD, 1L);
    set(easy, CURLOPT_READFUNCTION, &Transfer::read);
    set(easy, CURLOPT_READDATA, &transfer);
    set(easy, CURLOPT_INFILESIZE_LARGE, static_cast<curl_off_t>(transfer.delivery.contents.size()));
    if (is_mail) {
        for (std::string const &recipient : transfer.delivery.recipients) {
            curl_slist *const longer = curl_slist_append(transfer.recipients.get(), recipient.c_str());
            if (longer == nullptr) {
                throw std::bad_alloc();
            }
            (void)transfer.recipients.release();
            transfer.recipients.reset(longer);
        }
        set(easy, CURLOPT_MAIL_FROM, transfer.delivery.sender.c_str());
        set(easy, CURLOPT_MAIL_RCPT, transfer.recipients.get());
    }
}

void Transfers::begin(Delivery delivery, bool only_with_tls, Done done) {
    List one;
    one.emplace_back(std::move(delivery), std::move(done));
    prepare(one.front(), only_with_tls);
    shared_.with([&](Shared &shared) {
        std::string const place = one.front().place();
        std::size_t const of_server = shared.of_server.count(place) == 0 ? 0 : shared.of_server.at(place);
        if (of_server >= most_to_a_server) {
            throw std::runtime_error("the queue is full: " + std::to_string(of_server) +
                                     " mails and uploads are on their way to " + quoted(place));
        }
        if (shared.count >= most) {
            throw std::runtime_error("the queue is full: " + std::to_string(shared.count) +
                                     " mails and uploads are on their way");
        }
        shared.of_server[place] = of_server + 1;
        ++shared.count;
        shared.on_way.splice(shared.on_way.end(), one);
        auto const transfer = std::prev(shared.on_way.end());
        try {
            // It cannot end before this lock does.
            transfer->thread = std::thread([this, transfer] { work(transfer); });
        } catch (...) {
            forget(shared, place);
            one.splice(one.end(), shared.on_way, transfer);
            throw;
        }
    });
}

void Transfers::forget(Shared &shared, std::string const &place) noexcept {
    --shared.count;
    auto const of_server = shared.of_server.find(place);
    if (--of_server->second == 0) {
        shared.of_server.erase(of_server);
    }
}

void Transfers::work(List::iterator transfer) noexcept {
    transfer->code = curl_easy_perform(transfer->easy.get());
    // The connection ends here, and not where the result is told.
    transfer->easy.reset();
    shared_.with([&](Shared &shared) { shared.over.splice(shared.over.end(), shared.on_way, transfer); });
    over_();
}

void Transfers::finish() {
    for (;;) {
        List one;
        shared_.with([&one](Shared &shared) {
            if (!shared.over.empty()) {
                one.splice(one.end(), shared.over, shared.over.begin());
            }
        });
        if (one.empty()) {
            return;
        }
        Transfer &transfer = one.front();
        if (transfer.thread.joinable()) {
            transfer.thread.join();
        }
        std::optional<RunResult> result;
        try {
            result = transfer.result();
        } catch (...) {
            // Memory is short. It is told of with the next call.
            shared_.with([&one](Shared &shared) { shared.over.splice(shared.over.begin(), one); });
            throw;
        }
        shared_.with([&transfer](Shared &shared) { forget(shared, transfer.place()); });
        transfer.done(std::move(*result));
    }
}

}  // namespace simulator::runners
