"""Lexon on many machines, with dask.distributed: `lexon-cluster`, or `python3 -m lexon.cluster`.

The client cuts the inputs into chunks of some thousand sentences, workers render them, and the client writes the results
in order. At any time there is a window of chunks on its way, so that no part needs memory that grows with the input.
"""
