"""How renders scale with the number of workers, foretold from the costs of messages: a simulation, event by event.

    python benchmarks/scaling_model.py --sample-ns 250 --merge-us 60 --piece-kb 22 --gigabit 10

Each worker has one task after the other in hand for one second of its work, as the engine's clients give it. The client's one link
carries results one after the other, then one of its cores merges each. docs/scaling.md has the numbers and what they mean.
"""

import argparse
import heapq

PIECE_PIXELS = 16 * 16


def speed(workers, samples, threads, sample, merge, size, link, cores, seconds=10.0):
    """Samples per second that come in, of `workers` of so many threads each."""
    compute = samples * sample / threads  # of a worker as a whole
    events = [(compute * (1 + index / workers), index) for index in range(workers)]
    heapq.heapify(events)
    link_free, core_free, done, held = 0.0, [0.0] * cores, 0, [0] * workers
    in_hand = max(1, int(1.0 / compute))
    while events:
        now, index = heapq.heappop(events)
        if now > seconds:
            break
        link_free = max(link_free, now) + size / link
        free = heapq.heappop(core_free)
        finished = max(free, link_free) + merge
        heapq.heappush(core_free, finished)
        if finished <= seconds:
            done += samples
        # A worker computes on as long as it has pieces; the next are asked for when results have come in.
        held[index] += 1
        lag = finished - now
        heapq.heappush(events, (now + max(compute, lag / in_hand), index))
    return done / seconds


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--sample-ns", type=float, required=True, help="of one thread, for one sample")
    parser.add_argument("--merge-us", type=float, required=True, help="of the client, for taking a piece in")
    parser.add_argument("--piece-kb", type=float, required=True, help="bytes of a piece, in 1000")
    parser.add_argument("--spp", type=int, default=256, help="samples per pixel of a piece: 16 in the beginning of a render, many later")
    parser.add_argument("--gigabit", type=float, default=10.0, help="of the client's link")
    parser.add_argument("--threads", type=int, default=16, help="of each worker")
    parser.add_argument("--cores", type=int, default=4, help="of the client, for merging")
    options = parser.parse_args()
    samples = PIECE_PIXELS * options.spp
    costs = options.sample_ns * 1e-9, options.merge_us * 1e-6, options.piece_kb * 1e3
    known = (samples, options.threads, *costs, options.gigabit * 1.25e8, options.cores)
    one = speed(1, *known)
    print("workers  speed-up")
    for workers in (1, 2, 4, 8, 16, 32, 64):
        print(f"{workers:7}  {speed(workers, *known) / one:8.1f}")


if __name__ == "__main__":
    main()
