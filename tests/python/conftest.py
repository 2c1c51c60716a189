import pytest

from toy_server import ToyServer


@pytest.fixture
def serve():
    """Starts a toy server for a world; all are taken down after the test."""
    servers = []

    def start(world):
        servers.append(ToyServer(world))
        return servers[-1]

    yield start
    for server in reversed(servers):
        server.uninstall()
