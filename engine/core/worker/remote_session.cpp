#include "engine/core/worker/remote_session.h"

#include <algorithm>
#include <exception>
#include <utility>
#include <vector>

#include "engine/common/log.h"
#include "engine/core/api/version.h"
#include "engine/core/film/arrays.h"
#include "engine/core/worker/cut_out_bytes.h"

namespace nemra::core::worker {

namespace {

constexpr int kLongestWaitMs = 250;
/// A worker that says nothing for so long is taken for dead; workers say something every kAliveEvery.
constexpr std::chrono::seconds kSilence{12};
constexpr std::chrono::seconds kAliveEvery{2};
/// What a worker has in hand should last that long: enough to bridge the way there and back, little to lose.
constexpr double kInHandSeconds = 1.0;
constexpr std::chrono::milliseconds kMeasureEvery{250};
constexpr std::chrono::milliseconds kMeasureFirst{50};
/// Of a thread of the worker's: what a piece should take at least. To send it and to take it in costs both ends 0.1 ms each.
constexpr double kPieceSeconds = 0.030;
/// That should come from all workers together: with three channels 83 MB/s, which a link of 1 Gbit/s bears, and a core of ours.
constexpr double kPiecesPerSecond = 4000.0;
/// To begin with, per thread of the worker.
constexpr double kFirstSamples = 8192.0;

}  // namespace

RemoteSession::RemoteSession(RemoteRender& render, network::Link& link, std::string name)
    : render_(render),
      link_(link),
      name_(std::move(name)),
      channels_(render.scene->makeFilm({0, 0, 1, 1})->channels.size()),
      measuredAt_(Clock::now()),
      lastHeard_(measuredAt_),
      lastTold_(measuredAt_) {}

RemoteSession::~RemoteSession() {
    try {
        for (const auto& [id, piece] : open_) render_.job->giveBack({&id, 1});
    } catch (const std::exception&) {
        render_.job->stop();  // without memory for it nobody would render the piece, and the render would wait for it for ever
    }
}

std::optional<RemoteSession::Ending> RemoteSession::lose(std::string why) {
    why_ = std::move(why);
    return Ending::lost;
}

RemoteSession::Ending RemoteSession::run() {
    outbox_.push_back(encode(Hello{kProtocol, kVersionText, link_.challenge()}));
    std::string message;
    for (;;) {
        if (render_.isOver()) {
            send(Goodbye{});
            return Ending::over;
        }
        tellPause();
        if (isReady_) askForWork();
        const auto now = Clock::now();
        if (now - lastTold_ >= kAliveEvery) outbox_.push_back(encode(Alive{}));
        if (now - lastHeard_ > kSilence) return *lose("nothing has been heard of it");
        const bool isStuck = !flush();
        switch (link_.wait(kLongestWaitMs, isStuck, message)) {
            case network::Event::message:
                if (const auto ending = receive(message)) return *ending;
                break;
            case network::Event::closed:
                return *lose("the connection is cut");
            default:
                break;
        }
    }
}

bool RemoteSession::send(const Message& message) {
    if (!link_.send(encode(message))) return false;
    lastTold_ = Clock::now();
    return true;
}

/// False if there is more to send than the queue takes now.
bool RemoteSession::flush() {
    for (; !outbox_.empty(); outbox_.pop_front()) {
        if (!link_.send(outbox_.front())) return false;
        lastTold_ = Clock::now();
    }
    const std::span<const char> parcel = render_.parcel->bytes();
    while (isSending_ && sent_ < parcel.size()) {
        const auto part = parcel.subspan(sent_, std::min(kPartBytes, parcel.size() - sent_));
        if (!send(ScenePart{sent_, part})) return false;
        sent_ += part.size();
    }
    return true;
}

void RemoteSession::tellPause() {
    const bool paused = render_.job->state() == NEMRA_RENDERER_PAUSED;
    if (isReady_ && paused != isPaused_) {
        isPaused_ = paused;
        outbox_.push_back(encode(Pause{paused}));
    }
}

std::optional<RemoteSession::Ending> RemoteSession::receive(std::span<const char> bytes) {
    lastHeard_ = Clock::now();
    const auto message = decode(bytes);
    if (!message) return lose("it sent what isn't a message");
    if (!presence_ && !std::holds_alternative<Failed>(*message)) {
        const auto* const welcome = std::get_if<Welcome>(&*message);
        if (!welcome || !link_.isProof(welcome->proof)) return Ending::stranger;
        presence_.emplace(render_.attendance);
    }
    if (const auto* const part = std::get_if<ResultPart>(&*message)) return take(*part);
    if (const auto* const welcome = std::get_if<Welcome>(&*message)) {
        threads_ = std::clamp(welcome->threads, 1U, 4096U);
        target_ = kFirstSamples * threads_;
        if (welcome->ahead > 0) log::info(name_, "the worker is busy with another client: waiting for our turn");
    } else if (std::holds_alternative<Turn>(*message)) {
        outbox_.push_back(encode(SceneOffer{render_.hash, render_.parcel->size(), render_.setup}));
    } else if (const auto* const need = std::get_if<Need>(&*message)) {
        if (need->offset > render_.parcel->size()) return lose("it wants more of the scene than there is");
        isSending_ = true;
        sent_ = need->offset;
    } else if (std::holds_alternative<Ready>(*message)) {
        isSending_ = false;
        isReady_ = true;
        measuredAt_ = Clock::now();
        log::info(name_, "the worker renders");
    } else if (const auto* const failed = std::get_if<Failed>(&*message)) {
        if (failed->mayTryAgain) return lose(failed->why);
        why_ = failed->why;
        return Ending::refused;
    } else if (const auto* const said = std::get_if<Said>(&*message)) {
        log::emit(static_cast<LogLevel_t>(said->level), said->source, said->text);
    } else if (!std::holds_alternative<Alive>(*message)) {
        return lose("it talks like a client");
    }
    return std::nullopt;
}

void RemoteSession::askForWork() {
    measure();
    const int workers = render_.attendance.present();
    const double pieceSeconds =
        std::max(kPieceSeconds, threads_ * workers / kPiecesPerSecond);  // all are taken to be like this one
    const auto pieces = render_.job->takePieces({.hand = static_cast<std::uint64_t>(target_),
                                                 .held = openSamples_,
                                                 .each = static_cast<std::uint64_t>(rate_ / threads_ * pieceSeconds) + 1,
                                                 .workers = workers});
    for (std::size_t first = 0; first < pieces.size(); first += kMostPieces) {
        Work work;
        for (std::size_t i = first; i < std::min(pieces.size(), first + kMostPieces); ++i) {
            work.items.push_back({pieces[i].id, pieces[i].piece});
            open_.emplace(pieces[i].id, pieces[i].piece);
            openSamples_ += pieces[i].piece.samples();
        }
        outbox_.push_back(encode(work));
    }
}

std::optional<RemoteSession::Ending> RemoteSession::take(const ResultPart& part) {
    results_.append(part.bytes);
    while (const auto head = results_.head()) {
        const auto found = open_.find(head->id);
        if (found == open_.end()) return lose("it sent a result that it wasn't asked for");
        if (head->size != arrayBytes(found->second.pixels(), channels_)) return lose("it sent a result of another size");
        const auto bytes = results_.take(*head);
        if (!bytes) break;
        if (!deliver(*head, *bytes)) return lose("it sent a damaged result");
    }
    return std::nullopt;
}

/// Most pieces are of one size, and reading fills all of the film.
void RemoteSession::makeFilmFor(const PreparedScene::Tile& tile) {
    if (film_ && film_->width == tile.x1 - tile.x0 && film_->height == tile.y1 - tile.y0) {
        film_->left = tile.x0;
        film_->top = tile.y0;
    } else {
        film_ = render_.scene->makeFilm(tile);
    }
}

bool RemoteSession::deliver(const ResultHead& head, std::span<const char> bytes) {
    const auto found = open_.find(head.id);
    const Piece& piece = found->second;
    const std::uint64_t samples = piece.samples();
    makeFilmFor(piece.tile);
    if (head.samples != samples || head.wrong > samples || !readCutOut(bytes, piece.count, *film_)) return false;
    render_.job->deliver(head.id, *film_, {head.samples, head.wrong});
    delivered_ += samples;
    openSamples_ -= samples;
    open_.erase(found);
    return true;
}

void RemoteSession::measure() {
    const auto now = Clock::now();
    if (now - measuredAt_ < (rate_ > 0.0 ? kMeasureEvery : kMeasureFirst) || isPaused_) return;
    const double seconds = std::chrono::duration<double>(now - measuredAt_).count();
    const double current = static_cast<double>(std::exchange(delivered_, 0)) / seconds;
    measuredAt_ = now;
    // A worker that is given little delivers little: growth is believed at once, a lull is not.
    rate_ = current > rate_ ? current : rate_ + 0.25 * (current - rate_);
    if (rate_ > 0.0) target_ = std::max(rate_ * kInHandSeconds, kFirstSamples);
}

}  // namespace nemra::core::worker
