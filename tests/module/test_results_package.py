"""Results by rows and columns, through the Python package."""

import io

import imageio.v3
import numpy as np
import pytest
from made_results import made_result

from sarvo import nemra, results

QUANTITY = nemra.Raw.quantity


@pytest.fixture(scope="module")
def raw():
    return made_result(5, width=7, height=4)


def test_rows_come_first(raw):
    picture = results.image(raw)
    assert picture.shape == (4, 7, 3) and picture.dtype == np.float32
    y = results.names(raw).index("Y")
    for column, row in ((0, 0), (6, 0), (2, 3)):
        assert picture[row, column, y] == np.float32(raw.getLightQuantity(y, column, row, QUANTITY.Raw))
    assert results.meta(raw, "spp").shape == results.meta(raw, "snr").shape == (4, 7)


def test_one_sample_has_no_standard_error(raw):
    assert np.isnan(results.standard_error(raw)).all()


def test_what_isnt_there_raises(raw, capfd):
    with pytest.raises(ValueError, match="no SensorPower, only Raw, SceneRadiance"):
        results.image(raw, QUANTITY.SensorPower)
    with pytest.raises(ValueError, match="'albedo', only variance, spp, snr, depth"):
        results.meta(raw, "albedo")
    emptied = raw.copy()
    emptied.removeChannels()
    for gone in (nemra.Raw.readSvraw("/no/such.svraw"), emptied):
        for ask in (results.image, results.standard_error, results.ugr, results.preview):
            with pytest.raises(ValueError, match="no result"):
                ask(gone)
    assert results.wavelengths(raw).size == 0
    assert "is not computed" not in capfd.readouterr().out


def test_notebooks_get_the_picture_of_the_output(raw):
    shown = results.preview(raw)
    assert imageio.v3.imread(io.BytesIO(shown._repr_png_())).shape == (4, 7, 3)
    assert repr(shown) == "rgbimage: 7 x 4 pixels, 1 samples per pixel"
