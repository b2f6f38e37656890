"""The Wine machine: made from a template, plugged, run, looked at and thrown away."""
