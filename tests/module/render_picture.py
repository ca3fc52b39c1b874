"""The least render: one sample of each pixel."""

import threading

from sarvo import nemra


def picture_of(start, *arguments):
    """The picture that a renderer makes, started by its method of that name."""
    pictures, finished = [], threading.Event()

    def finish(raw):
        pictures.append(raw.pixels())
        finished.set()

    made = nemra.Renderer()
    made.setHaltCondition(time=0, spp=1, action=nemra.Renderer.halt_cond.stops)
    made.addLocalNode()
    made.onFinish(finish)
    assert getattr(made, start)(*arguments)
    assert finished.wait(60)
    return pictures[0]
